// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Text.hpp"

#include <fmt/format.h>

#include <charconv>

namespace SmbusService::Recording {

namespace {

using namespace std::chrono;

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::string_view kWordPrefix = "0x";
constexpr size_t kMostWordDigits = 16;
constexpr size_t kMostFractionDigits = 9;

std::optional<uint64_t> number(std::string_view digits, int base) {
  uint64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [stopped, error] = std::from_chars(digits.data(), end, value, base);
  return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

// Takes a number of exactly `width` digits, and what follows it, off the front.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  int take(size_t width, char after) {
    const int value = take(width);
    if (good_ && !rest_.starts_with(after)) {
      good_ = false;
    }
    rest_.remove_prefix(good_ ? 1 : 0);
    return value;
  }
  int take(size_t width) {
    const std::string_view digits = rest_.substr(0, width);
    const auto value = digits.size() == width ? number(digits, 10) : std::nullopt;
    good_ = good_ && value;
    rest_.remove_prefix(good_ ? width : 0);
    return good_ ? static_cast<int>(*value) : 0;
  }
  [[nodiscard]] bool good() const { return good_; }
  [[nodiscard]] std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
  bool good_ = true;
};

// ".5Z", "Z" or nothing.
std::optional<nanoseconds> fraction(std::string_view text) {
  if (text.ends_with('Z')) {
    text.remove_suffix(1);
  }
  if (text.empty()) {
    return nanoseconds(0);
  }
  if (text.front() != '.' || text.size() < 2 || text.size() > 1 + kMostFractionDigits) {
    return std::nullopt;
  }
  std::string digits(text.substr(1));
  digits.resize(kMostFractionDigits, '0');
  const auto value = number(digits, 10);
  return value ? std::optional(nanoseconds(*value)) : std::nullopt;
}

std::optional<nanoseconds> timeOfDay(std::string_view text) {
  Fields fields(text);
  const int hour = fields.take(2, ':');
  const int minute = fields.take(2, ':');
  const int second = fields.take(2);
  const auto rest = fraction(fields.rest());
  if (!fields.good() || !rest || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  return hours(hour) + minutes(minute) + seconds(second) + *rest;
}

}  // namespace

std::string toHex(std::string_view bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char byte : bytes) {
    text.push_back(kDigits[static_cast<uint8_t>(byte) >> 4]);
    text.push_back(kDigits[static_cast<uint8_t>(byte) & 0xF]);
  }
  return text;
}

std::optional<std::string> fromHex(std::string_view digits) {
  if (digits.size() % 2 != 0) {
    return std::nullopt;
  }
  std::string bytes;
  bytes.reserve(digits.size() / 2);
  for (size_t i = 0; i < digits.size(); i += 2) {
    const auto byte = number(digits.substr(i, 2), 16);
    if (!byte) {
      return std::nullopt;
    }
    bytes.push_back(static_cast<char>(*byte));
  }
  return bytes;
}

std::string toWord(uint64_t word) {
  std::string text(kWordPrefix);
  for (int shift = 60; shift >= 0; shift -= 4) {
    text.push_back(kDigits[word >> shift & 0xF]);
  }
  return text;
}

std::optional<uint64_t> fromWord(std::string_view text) {
  if (!text.starts_with(kWordPrefix) || text.size() > kWordPrefix.size() + kMostWordDigits) {
    return std::nullopt;
  }
  return number(text.substr(kWordPrefix.size()), 16);
}

std::string toUtc(nanoseconds sinceEpoch) {
  const auto whole = floor<days>(sinceEpoch);
  const year_month_day date{sys_days(whole)};
  const hh_mm_ss time(floor<microseconds>(sinceEpoch - whole));
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     time.hours().count(), time.minutes().count(), time.seconds().count(),
                     time.subseconds().count());
}

std::optional<nanoseconds> fromUtc(std::string_view text) {
  constexpr size_t kDateWidth = 10;
  Fields fields(text.substr(0, kDateWidth));
  const year y(fields.take(4, '-'));
  const month m(static_cast<unsigned>(fields.take(2, '-')));
  const day d(static_cast<unsigned>(fields.take(2)));
  // Beyond these years the nanoseconds would not fit.
  if (!fields.good() || !(y / m / d).ok() || y < year(1970) || y > year(2200)) {
    return std::nullopt;
  }
  const nanoseconds date = sys_days(y / m / d).time_since_epoch();
  if (text.size() <= kDateWidth) {
    return date;
  }
  const auto time = text[kDateWidth] == 'T' ? timeOfDay(text.substr(kDateWidth + 1)) : std::nullopt;
  return time ? std::optional(date + *time) : std::nullopt;
}

}  // namespace SmbusService::Recording
