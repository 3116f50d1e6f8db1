// SPDX-License-Identifier: Apache-2.0
//
// What a board has many of is written once. An object with the key "for" stands for as many as its
// variables have values, all combinations of them for several:
//
//   "port {i+1} present": { "for": { "i": "0-47" }, "pins": ["cpld{i/16+1}:in{i/4%4+1}.{13-i%4*4}"]
//   }
//
// In braces stands an expression of whole numbers, variables, + - * / % and parentheses.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

// The variables' values for one of the repetitions.
class Variables {
 public:
  static constexpr int64_t kMost = 1'000'000'000;  // of a result on the way, either sign

  void set(const std::string& name, uint32_t value) { values_[name] = value; }

  // The text with every {expression} replaced by its value. Throws Config::FileError at `where` for
  // what is no expression, an unknown variable, a division by 0, and a result that is negative.
  [[nodiscard]] std::string fill(std::string_view text, const Item& where) const;

 private:
  std::map<std::string, uint32_t, std::less<>> values_;
};

// Calls `visit` for each repetition that the object `item` asks for; once, without variables, if it
// has no "for". Throws Config::FileError.
void repeat(const Item& item, const std::function<void(const Variables&)>& visit);

// Where "for" stands beside other keys.
constexpr const char* kRepetitionKey = "for";

}  // namespace SmbusService::Board
