// SPDX-License-Identifier: Apache-2.0
//
// What arguments the drivers take, a row each. docs/drivers/ has the same in words.
#pragma once

#include <span>
#include <string_view>

namespace Nimbo {

enum class Need { kRequired, kOptional };

// What an argument may be: a number with its range, or a text, where `words` (separated by blanks)
// are the texts there are, or what a template must hold; a label is that of a device of the
// topology, of one of the drivers `words` if there are any.
struct Form {
  enum class Sort { kNumber, kWord, kText, kTemplate, kLabel, kAnything } sort;
  long minimum = 0;
  long maximum = 0;
  std::string_view words = {};
};

// Only for devices whose argument `key` is one of the words; without words for those that have it.
struct Condition {
  const char* key;
  std::string_view words = {};
};

// One argument of one kind of logical device of one driver.
struct Rule {
  std::string_view driver;  // kAnyDriver: every driver that has no rows of its own for the kind
  std::string_view kind;
  std::string_view key;  // one that ends in kAnySuffix stands for all that begin so
  Need need;
  Form form;
  Condition condition = {};
};

constexpr std::string_view kAnyDriver = "*";
constexpr char kAnySuffix = '*';

// Arguments that begin with `prefix` and one each that ends likewise behind `partner`.
struct Pair {
  std::string_view driver;
  std::string_view kind;
  std::string_view prefix;
  std::string_view partner;
};

// A device that a driver looks for by its label.
struct Neighbour {
  std::string_view driver;
  const char* label;
  std::string_view labelsDriver;
};

std::span<const Rule> argumentRules();
std::span<const Pair> argumentPairs();
std::span<const Neighbour> neighbours();

}  // namespace Nimbo
