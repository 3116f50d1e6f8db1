// SPDX-License-Identifier: Apache-2.0
//
// A kind of logical device (fans, temperature sensors ...) is one row of kinds(): how it is added
// and what can be read of it. Whatever shows devices works from these rows alone.
#pragma once

#include <span>
#include <string>
#include <variant>

#include "pl/pl_status.h"
#include "tools/Board.hpp"
#include "tools/Library.hpp"

namespace Nimbo {

using Value = std::variant<std::monostate, bool, double, std::string>;

// What was read of a device: a status, and a value if it is no failure.
struct Reading {
  pl_status status = PL_STATUS_OK;
  Value value;
};

// The library's record of a device, pl_fan* for a fan and so on, as the add function gave it.
using Record = void*;

struct Column {
  const char* key;      // in JSON, with the unit where there is one: "celsius"
  const char* heading;  // in tables
  const char* unit;     // after the value in tables, may be empty
  int decimals;
  Reading (*read)(Record record, const Entry& entry);
};

// How a device that answers is doing.
enum class Health { kGood, kWarning, kBad };

struct Verdict {
  Health health = Health::kGood;
  std::string word = "ok";
};

struct Kind {
  const char* key;    // the list in the board description and in JSON: "temp_sensors"
  const char* word;   // on the command line: "temps"
  const char* title;  // over the table
  const char* fault;  // what PL_STATUS_FAULT means for it
  Record (*add)(const Library& library, const Board& board, const Entry& entry);
  std::span<const Column> columns;
  // Judges what was read, one reading a column, all PL_STATUS_OK. Null: always good.
  Verdict (*judge)(std::span<const Reading> readings) = nullptr;
};

// Every kind that can be shown, in the order in which it is shown.
std::span<const Kind* const> kinds();

// Null when no kind has this word.
const Kind* findKind(const std::string& word);

}  // namespace Nimbo
