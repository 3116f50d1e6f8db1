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

const Value* argument(const ArgumentsOf& arguments, std::string_view key) {
  const std::string name(key);
  const Value* const own = Config::member(arguments.own, name.c_str());
  return own != nullptr ? own : Config::member(arguments.shared, name.c_str());
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

bool isLabel(const Form& form, const Value& value, const TopologyIndex& devices) {
  const TopologyDevice* const device = devices.find(wordIn(value));
  return device != nullptr && (form.words.empty() || isOneOf(device->driver(), form.words));
}

bool fits(const Form& form, const Value& value, const TopologyIndex& devices) {
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
    case Form::Sort::kLabel:
      return isLabel(form, value, devices);
    case Form::Sort::kAnything:
      return true;
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
    case Form::Sort::kLabel:
      return "the label of a device of the topology";
    case Form::Sort::kAnything:
      return "a value";
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
  const Condition& condition = rule.condition;
  if (condition.key == nullptr) {
    return true;
  }
  const Value* const value = argument(arguments, condition.key);
  return value != nullptr && (condition.words.empty() || isOneOf(wordIn(*value), condition.words));
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

bool isPattern(const Rule& rule) { return rule.key.back() == kAnySuffix; }

bool isFor(const Rule& rule, std::string_view key) {
  return isPattern(rule) ? key.starts_with(rule.key.substr(0, rule.key.size() - 1))
                         : key == rule.key;
}

// The check of one file's arguments.
class Checker {
 public:
  Checker(const Config::JsonFile& file, const TopologyIndex& devices, const ArgumentsOf& arguments)
      : file_(file), devices_(devices), arguments_(arguments) {}

  void check() const;

 private:
  std::vector<Rule> rules() const;
  void checkKnown(const std::vector<Rule>& rules) const;
  void checkPresent(const Rule& rule) const;
  void checkValues(const Value* list, const Rule& rule) const;
  void checkPairs(const Value* list) const;
  void checkNeighbours() const;
  [[noreturn]] void fail(std::string_view key, const std::string& message) const;

  const Config::JsonFile& file_;
  const TopologyIndex& devices_;
  const ArgumentsOf& arguments_;
};

// At the argument, or at the entry for one that stands at its device.
void Checker::fail(std::string_view key, const std::string& message) const {
  const std::string name(key);
  const bool own = Config::member(arguments_.own, name.c_str()) != nullptr;
  file_.fail(
      own ? Config::pointerTo(arguments_.pointer + "/args", name.c_str()) : arguments_.pointer,
      message);
}

std::vector<Rule> Checker::rules() const {
  std::vector<Rule> rules = rulesOf(arguments_.driver, arguments_.kind);
  if (rules.empty()) {
    file_.fail(arguments_.pointer + "/device",
               fmt::format("the driver {} of this device has no {}; it has {}", arguments_.driver,
                           arguments_.kind, fmt::join(kindsOf(arguments_.driver), ", ")));
  }
  return rules;
}

void Checker::checkPresent(const Rule& rule) const {
  if (rule.need == Need::kRequired && argument(arguments_, rule.key) == nullptr) {
    file_.fail(arguments_.pointer,
               fmt::format("the argument \"{}\" is missing in \"args\"; the "
                           "driver {} expects {}",
                           rule.key, arguments_.driver, expectation(rule.form)));
  }
}

void Checker::checkValues(const Value* list, const Rule& rule) const {
  if (list == nullptr) {
    return;
  }
  for (const auto& given : list->GetObject()) {
    const std::string_view key = given.name.GetString();
    // What an entry gives for itself hides its device's.
    if (isFor(rule, key) && argument(arguments_, key) == &given.value &&
        !fits(rule.form, given.value, devices_)) {
      fail(key, fmt::format("the argument \"{}\" must be {}", key, expectation(rule.form)));
    }
  }
}

void Checker::checkKnown(const std::vector<Rule>& rules) const {
  std::set<std::string_view> keys;
  for (const Rule& rule : rules) {
    keys.insert(rule.key);
  }
  for (const auto& given : arguments_.own->GetObject()) {
    const char* const key = given.name.GetString();
    if (std::ranges::none_of(rules, [&](const Rule& rule) { return isFor(rule, key); })) {
      throw Config::FileError(
          file_.keyPlaceOf(Config::pointerTo(arguments_.pointer + "/args", key)),
          fmt::format("unknown argument \"{}\"; the driver {} takes {} for {}", key,
                      arguments_.driver, fmt::join(keys, ", "), arguments_.kind));
    }
  }
}

void Checker::checkPairs(const Value* list) const {
  for (const Pair& pair : argumentPairs()) {
    if (list == nullptr || pair.driver != arguments_.driver || pair.kind != arguments_.kind) {
      continue;
    }
    for (const auto& given : list->GetObject()) {
      const std::string_view key = given.name.GetString();
      if (!key.starts_with(pair.prefix)) {
        continue;
      }
      const std::string partner = fmt::format("{}{}", pair.partner, key.substr(pair.prefix.size()));
      if (argument(arguments_, partner) == nullptr) {
        fail(key,
             fmt::format("the argument \"{}\" goes with \"{}\", which is missing", key, partner));
      }
    }
  }
}

void Checker::checkNeighbours() const {
  for (const Neighbour& neighbour : neighbours()) {
    if (neighbour.driver != arguments_.driver) {
      continue;
    }
    const TopologyDevice* const device = devices_.find(neighbour.label);
    if (device == nullptr || device->driver() != neighbour.labelsDriver) {
      file_.fail(arguments_.pointer + "/device",
                 fmt::format("the driver {} needs a device with the label \"{}\" and the driver {}",
                             arguments_.driver, neighbour.label, neighbour.labelsDriver));
    }
  }
}

void Checker::check() const {
  const std::vector<Rule> all = rules();
  if (arguments_.own != nullptr) {
    checkKnown(all);
  }
  for (const Rule& rule : all) {
    if (concerns(rule, arguments_)) {
      checkPresent(rule);
      checkValues(arguments_.own, rule);
      checkValues(arguments_.shared, rule);
    }
  }
  checkPairs(arguments_.own);
  checkPairs(arguments_.shared);
  checkNeighbours();
}

}  // namespace

void checkArguments(const Config::JsonFile& file, const TopologyIndex& devices,
                    const ArgumentsOf& arguments) {
  Checker(file, devices, arguments).check();
}

}  // namespace Nimbo
