// SPDX-License-Identifier: Apache-2.0
//
// What arguments the drivers take, a row each. docs/drivers/ has the same in words.
#pragma once

#include <span>
#include <string_view>

namespace Nimbo {

enum class Need { kRequired, kOptional };

// What an argument may be: a number with its range, or a text, where `words` (separated by blanks)
// are the texts there are, or what a template must hold.
struct Form {
  enum class Sort { kNumber, kWord, kText, kTemplate } sort;
  long minimum = 0;
  long maximum = 0;
  std::string_view words = {};
};

// One argument of one kind of logical device of one driver.
struct Rule {
  std::string_view driver;  // kAnyDriver: every driver that has no rows of its own for the kind
  std::string_view kind;
  const char* key;
  Need need;
  Form form;
  std::string_view types = {};  // only for devices whose argument "type" is one of these words
};

constexpr std::string_view kAnyDriver = "*";

std::span<const Rule> argumentRules();

}  // namespace Nimbo
