// SPDX-License-Identifier: Apache-2.0
#include "identity/FruTime.hpp"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>

namespace Identity::Fru {
namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr sys_days kEpoch{year{1996} / 1 / 1};
constexpr uint32_t kMinutesOfDay = 24 * 60;
constexpr long kMost = 0xFFFFFF;

}  // namespace

std::string timeText(uint32_t minutes) {
  const year_month_day date{kEpoch + std::chrono::days{minutes / kMinutesOfDay}};
  const uint32_t minute = minutes % kMinutesOfDay;
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     minute / 60, minute % 60);
}

std::optional<uint32_t> parseTime(const std::string& text) {
  unsigned y = 0;
  unsigned m = 0;
  unsigned d = 0;
  unsigned hour = 0;
  unsigned minute = 0;
  if (std::sscanf(text.c_str(), "%4u-%2u-%2uT%2u:%2uZ", &y, &m, &d, &hour, &minute) != 5) {
    return {};
  }
  const year_month_day date{year{static_cast<int>(y)}, month{m}, day{d}};
  if (!date.ok()) {
    return {};
  }
  const long minutes = (sys_days{date} - kEpoch).count() * long{kMinutesOfDay} + hour * 60 + minute;
  // The text that stands for the minutes is the one that was written, or it was no time.
  if (minutes < 1 || minutes > kMost || timeText(static_cast<uint32_t>(minutes)) != text) {
    return {};
  }
  return static_cast<uint32_t>(minutes);
}

}  // namespace Identity::Fru
