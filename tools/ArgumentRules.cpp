// SPDX-License-Identifier: Apache-2.0
#include "tools/ArgumentRules.hpp"

#include <charconv>
#include <climits>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "config/JsonValue.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;

enum class Need { kRequired, kOptional };

// One argument of one kind of logical device of one driver. A number with its range, or, where
// `words` is given, one of the words in it (separated by blanks).
struct Rule {
  std::string_view driver;  // kAnyDriver: every driver
  std::string_view kind;
  const char* key;
  Need need;
  long minimum;
  long maximum;
  std::string_view words = {};
};

constexpr std::string_view kAnyDriver = "*";

constexpr Rule kRules[] = {
    {kAnyDriver, "gpios", "register", Need::kRequired, 0, 255},
    {kAnyDriver, "gpios", "bitpos", Need::kRequired, 0, 7},
    {"HalvorsaPsoc", "fans", "fanId", Need::kRequired, 1, 4},
    {"HalvorsaPsoc", "fans", "registerOffset", Need::kRequired, 0, 3},
    {"HalvorsaPsoc", "fans", "maxRpm", Need::kRequired, 1, INT_MAX / 100},
    {"HalvorsaPsoc", "fans", "pwmMaster", Need::kOptional, 0, 0, "true false"},
    {"HalvorsaPsoc", "temp_sensors", "sensorId", Need::kRequired, 0, 255},
    {"HalvorsaPsoc", "temp_sensors", "register", Need::kRequired, 0, 255},
    {"SmbusProxyDriver", "smbus", "localReadDelayMs", Need::kOptional, 0, 10000},
    {"SmbusProxyDriver", "smbus", "localWriteDelayMs", Need::kOptional, 0, 10000},
};

bool isFor(const Rule& rule, const std::string& driver) {
  return rule.driver == driver || rule.driver == kAnyDriver;
}

std::optional<long> number(const Value& value) {
  if (value.IsInt64()) {
    return value.GetInt64();
  }
  if (!value.IsString()) {
    return std::nullopt;
  }
  const char* const end = value.GetString() + value.GetStringLength();
  long parsed = 0;
  const auto [rest, error] = std::from_chars(value.GetString(), end, parsed);
  return error == std::errc() && rest == end ? std::optional(parsed) : std::nullopt;
}

std::string word(const Value& value) {
  return value.IsString() ? value.GetString()
         : value.IsBool() ? value.IsTrue() ? "true" : "false"
                          : "";
}

bool isOneOf(const std::string& text, std::string_view words) {
  return !text.empty() && fmt::format(" {} ", words).find(" " + text + " ") != std::string::npos;
}

bool fits(const Rule& rule, const Value& value) {
  if (!rule.words.empty()) {
    return isOneOf(word(value), rule.words);
  }
  const std::optional<long> given = number(value);
  return given && *given >= rule.minimum && *given <= rule.maximum;
}

std::string expectation(const Rule& rule) {
  return rule.words.empty() ? fmt::format("a number from {} to {}", rule.minimum, rule.maximum)
                            : fmt::format("one of the words {}", rule.words);
}

std::vector<Rule> rulesFor(const Config::JsonFile& file, const ArgumentsOf& arguments) {
  std::vector<Rule> rules;
  std::set<std::string_view> kinds;
  for (const Rule& rule : kRules) {
    if (isFor(rule, arguments.driver)) {
      kinds.insert(rule.kind);
      if (rule.kind == arguments.kind) {
        rules.push_back(rule);
      }
    }
  }
  if (rules.empty()) {
    file.fail(arguments.pointer + "/device",
              fmt::format("the driver {} of this device has no {}; it has {}", arguments.driver,
                          arguments.kind, fmt::join(kinds, ", ")));
  }
  return rules;
}

void checkOne(const Config::JsonFile& file, const ArgumentsOf& arguments, const Rule& rule) {
  const Value* const own = Config::member(arguments.own, rule.key);
  const Value* const value = own != nullptr ? own : Config::member(arguments.shared, rule.key);
  if (value == nullptr) {
    if (rule.need == Need::kRequired) {
      file.fail(arguments.pointer, fmt::format("the argument \"{}\" is missing in \"args\"; the "
                                               "driver {} expects {}",
                                               rule.key, arguments.driver, expectation(rule)));
    }
    return;
  }
  if (!fits(rule, *value)) {
    file.fail(own != nullptr ? Config::pointerTo(arguments.pointer + "/args", rule.key)
                             : arguments.pointer,
              fmt::format("the argument \"{}\" must be {}", rule.key, expectation(rule)));
  }
}

void checkKnown(const Config::JsonFile& file, const ArgumentsOf& arguments,
                const std::vector<Rule>& rules) {
  std::set<std::string_view> keys;
  for (const Rule& rule : rules) {
    keys.insert(rule.key);
  }
  for (const auto& argument : arguments.own->GetObject()) {
    if (!keys.contains(argument.name.GetString())) {
      const auto place = file.keyPlaceOf(
          Config::pointerTo(arguments.pointer + "/args", argument.name.GetString()));
      throw Config::FileError(
          place, fmt::format("unknown argument \"{}\"; the driver {} takes {} for {}",
                             argument.name.GetString(), arguments.driver, fmt::join(keys, ", "),
                             arguments.kind));
    }
  }
}

}  // namespace

void checkArguments(const Config::JsonFile& file, const ArgumentsOf& arguments) {
  const std::vector<Rule> rules = rulesFor(file, arguments);
  if (arguments.own != nullptr) {
    checkKnown(file, arguments, rules);
  }
  for (const Rule& rule : rules) {
    checkOne(file, arguments, rule);
  }
}

}  // namespace Nimbo
