// SPDX-License-Identifier: Apache-2.0
#include "config/Settings.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>

namespace Config {
namespace {

std::string_view textOf(const rapidjson::Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

rapidjson::Value keyValue(std::string_view key) {
  return rapidjson::Value(
      rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size())));
}

}  // namespace

std::optional<uint32_t> parseNumber(std::string_view text) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) {
    text.remove_prefix(2);
  }
  uint32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number, hex ? 16 : 10);
  if (error != std::errc() || stopped != end) {
    return std::nullopt;
  }
  return number;
}

uint32_t Item::number(uint32_t least, uint32_t most) const {
  std::optional<uint32_t> number;
  if (value.IsUint()) {
    number = value.GetUint();
  }
  if (value.IsString()) {
    number = parseNumber(textOf(value));
  }
  if (number && *number >= least && *number <= most) {
    return *number;
  }
  fail(fmt::format(
      "write a whole number from {} to {} (\"0x{:02X}\" to \"0x{:02X}\" in hexadecimal)", least,
      most, least, most));
}

std::string Item::text() const {
  if (!value.IsString()) {
    fail("write a text in quotes");
  }
  if (value.GetStringLength() == 0) {
    fail("write a text in quotes that is not empty");
  }
  return std::string(textOf(value));
}

Range Item::range(uint32_t most) const {
  if (!value.IsString()) {
    const uint32_t only = number(0, most);
    return {only, only};
  }
  const std::string_view text = textOf(value);
  const size_t dash = text.find('-');
  const auto first = parseNumber(text.substr(0, dash));
  const auto last = dash == std::string_view::npos ? first : parseNumber(text.substr(dash + 1));
  if (!first || !last || *first > *last || *last > most) {
    fail(fmt::format("write a number or a range up to {}, like \"0x10\" or \"0x20-0x2F\"", most));
  }
  return {*first, *last};
}

std::vector<uint32_t> Item::numbers(uint32_t most) const {
  std::vector<uint32_t> numbers;
  if (value.IsArray()) {
    for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
      numbers.push_back(element(i).number(0, most));
    }
  } else if (value.IsString() && !parseNumber(textOf(value))) {
    for (const char c : textOf(value)) {
      numbers.push_back(static_cast<uint8_t>(c));
    }
  } else {
    numbers.push_back(number(0, most));
  }
  return numbers;
}

Item Item::member(std::string_view key, const rapidjson::Value& of) const {
  return {file, of, pointerTo(pointer, key)};
}

Item Item::element(rapidjson::SizeType index) const {
  return {file, value[index], pointerTo(pointer, size_t{index})};
}

Settings::Settings(Item object) : object_(std::move(object)) {
  if (!object_.value.IsObject()) {
    object_.fail("an object { ... } belongs here");
  }
}

bool Settings::has(std::string_view key) const { return object_.value.HasMember(keyValue(key)); }

std::optional<Item> Settings::find(std::string_view key) {
  known_.emplace(key);
  const auto member = object_.value.FindMember(keyValue(key));
  if (member == object_.value.MemberEnd()) {
    return std::nullopt;
  }
  return std::optional<Item>(object_.member(key, member->value));
}

Item Settings::require(std::string_view key) {
  const std::optional<Item> item = find(key);
  if (!item) {
    object_.fail(fmt::format("add the key \"{}\"", key));
  }
  return *item;
}

uint32_t Settings::number(std::string_view key, uint32_t least, uint32_t most,
                          std::optional<uint32_t> absent) {
  if (absent && !has(key)) {
    return known_.emplace(key), *absent;
  }
  return require(key).number(least, most);
}

double Settings::real(std::string_view key, double least, double most, double absent) {
  const std::optional<Item> item = find(key);
  if (!item) {
    return absent;
  }
  const rapidjson::Value& value = item->value;
  if (!value.IsNumber() || value.GetDouble() < least || value.GetDouble() > most) {
    item->fail(fmt::format("write a number from {} to {}", least, most));
  }
  return value.GetDouble();
}

bool Settings::flag(std::string_view key, bool absent) {
  const std::optional<Item> item = find(key);
  if (!item) {
    return absent;
  }
  if (!item->value.IsBool()) {
    item->fail("write true or false");
  }
  return item->value.GetBool();
}

std::string Settings::text(std::string_view key, std::optional<std::string_view> absent) {
  const std::optional<Item> item = absent ? find(key) : require(key);
  return item ? item->text() : std::string(*absent);
}

size_t Settings::choice(std::string_view key, const std::vector<std::string_view>& choices) {
  const std::optional<Item> item = find(key);
  if (!item) {
    return 0;
  }
  const auto found =
      item->value.IsString() ? std::ranges::find(choices, textOf(item->value)) : choices.end();
  if (found == choices.end()) {
    item->fail(fmt::format("write one of \"{}\"", fmt::join(choices, "\", \"")));
  }
  return static_cast<size_t>(found - choices.begin());
}

void Settings::forEach(std::string_view key, const std::function<void(const Item&)>& visit) {
  const std::optional<Item> list = find(key);
  if (!list) {
    return;
  }
  if (!list->value.IsArray()) {
    list->fail("a list [ ... ] belongs here");
  }
  for (rapidjson::SizeType i = 0; i < list->value.Size(); ++i) {
    visit(list->element(i));
  }
}

void Settings::forEachMember(std::string_view key,
                             const std::function<void(const std::string&, const Item&)>& visit) {
  const std::optional<Item> object = find(key);
  if (!object) {
    return;
  }
  if (!object->value.IsObject()) {
    object->fail("an object { ... } belongs here");
  }
  for (const auto& member : object->value.GetObject()) {
    const std::string name(textOf(member.name));
    visit(name, object->member(name, member.value));
  }
}

void Settings::fail(std::string_view key, const std::string& message) const {
  object_.file.fail(has(key) ? pointerTo(object_.pointer, key) : object_.pointer, message);
}

void Settings::finish() const {
  for (const auto& member : object_.value.GetObject()) {
    const std::string_view name = textOf(member.name);
    if (known_.contains(name)) {
      continue;
    }
    throw FileError(object_.file.keyPlaceOf(pointerTo(object_.pointer, name)),
                    fmt::format("\"{}\" is not known here; the keys are \"{}\"", name,
                                fmt::join(known_, "\", \"")));
  }
}

}  // namespace Config
