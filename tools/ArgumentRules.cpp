// SPDX-License-Identifier: Apache-2.0
#include "tools/ArgumentRules.hpp"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "config/JsonValue.hpp"
#include "tools/ArgumentTable.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;

const Value* argument(const ArgumentsOf& arguments, const char* key) {
  const Value* const own = Config::member(arguments.own, key);
  return own != nullptr ? own : Config::member(arguments.shared, key);
}

std::optional<long> numberIn(const Value& value) {
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

std::string wordIn(const Value& value) {
  return value.IsString() ? value.GetString()
         : value.IsBool() ? value.IsTrue() ? "true" : "false"
                          : "";
}

std::vector<std::string> split(std::string_view words) {
  std::istringstream stream{std::string(words)};
  return {std::istream_iterator<std::string>(stream), {}};
}

bool isOneOf(const std::string& word, std::string_view words) {
  const auto known = split(words);
  return std::ranges::find(known, word) != known.end();
}

bool holdsAll(const std::string& text, std::string_view words) {
  return std::ranges::all_of(
      split(words), [&](const std::string& word) { return text.find(word) != std::string::npos; });
}

bool fits(const Form& form, const Value& value) {
  switch (form.sort) {
    case Form::Sort::kNumber: {
      const std::optional<long> given = numberIn(value);
      return given && *given >= form.minimum && *given <= form.maximum;
    }
    case Form::Sort::kWord:
      return isOneOf(wordIn(value), form.words);
    case Form::Sort::kText:
      return value.IsString();
    case Form::Sort::kTemplate:
      return value.IsString() && holdsAll(value.GetString(), form.words);
  }
  return false;
}

std::string expectation(const Form& form) {
  switch (form.sort) {
    case Form::Sort::kNumber:
      return fmt::format("a number from {} to {}", form.minimum, form.maximum);
    case Form::Sort::kWord:
      return fmt::format("one of the words {}", form.words);
    case Form::Sort::kText:
      return "a text";
    case Form::Sort::kTemplate:
      return fmt::format("a text with each of {}", form.words);
  }
  return "";
}

// The rows of a driver, which hide those for any driver.
std::vector<Rule> rulesOf(std::string_view driver, std::string_view kind) {
  std::vector<Rule> rules;
  for (const Rule& rule : argumentRules()) {
    if (rule.driver == driver && rule.kind == kind) {
      rules.push_back(rule);
    }
  }
  return rules.empty() && driver != kAnyDriver ? rulesOf(kAnyDriver, kind) : rules;
}

bool concerns(const Rule& rule, const ArgumentsOf& arguments) {
  const Value* const type = argument(arguments, "type");
  return rule.types.empty() || (type != nullptr && isOneOf(wordIn(*type), rule.types));
}

std::set<std::string_view> kindsOf(std::string_view driver) {
  std::set<std::string_view> kinds;
  for (const Rule& rule : argumentRules()) {
    if (rule.driver == driver || rule.driver == kAnyDriver) {
      kinds.insert(rule.kind);
    }
  }
  return kinds;
}

std::vector<Rule> rulesFor(const Config::JsonFile& file, const ArgumentsOf& arguments) {
  const std::vector<Rule> rules = rulesOf(arguments.driver, arguments.kind);
  if (rules.empty()) {
    file.fail(arguments.pointer + "/device",
              fmt::format("the driver {} of this device has no {}; it has {}", arguments.driver,
                          arguments.kind, fmt::join(kindsOf(arguments.driver), ", ")));
  }
  return rules;
}

void checkOne(const Config::JsonFile& file, const ArgumentsOf& arguments, const Rule& rule) {
  const Value* const own = Config::member(arguments.own, rule.key);
  const Value* const value = argument(arguments, rule.key);
  if (value == nullptr) {
    if (rule.need == Need::kRequired) {
      file.fail(arguments.pointer, fmt::format("the argument \"{}\" is missing in \"args\"; the "
                                               "driver {} expects {}",
                                               rule.key, arguments.driver, expectation(rule.form)));
    }
    return;
  }
  if (!fits(rule.form, *value)) {
    file.fail(own != nullptr ? Config::pointerTo(arguments.pointer + "/args", rule.key)
                             : arguments.pointer,
              fmt::format("the argument \"{}\" must be {}", rule.key, expectation(rule.form)));
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
    if (concerns(rule, arguments)) {
      checkOne(file, arguments, rule);
    }
  }
}

}  // namespace Nimbo
