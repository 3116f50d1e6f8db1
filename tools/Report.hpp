// SPDX-License-Identifier: Apache-2.0
//
// What was observed, for people and for programs. docs/nimbo.md describes the JSON.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/Device.hpp"
#include "tools/Table.hpp"

namespace Nimbo {

// All devices of one kind.
struct Group {
  const Kind* kind;
  std::vector<Observation> observations;
};

struct Report {
  std::string board;
  bool live = false;
  std::string time;  // when it was observed, for a report of several; else empty
  std::vector<Group> groups;

  // True when the library reported a failure for a device; an empty slot is none, and a temperature
  // above its threshold is a reading.
  bool failed() const;
};

// How text for people looks.
struct Style {
  bool colours = false;
  bool unicode = false;  // drawing characters may be used
  bool panel = false;    // transceivers are a picture of the front panel, not a table
};

// A table for each kind that has devices.
std::string tables(const Report& report, const Style& style);

// A value as it stands in a table.
std::string valueText(const Column& column, const Value& value);

Colour healthColour(Health health);

// One JSON object, on one line or indented; ends in '\n'.
enum class JsonStyle { kLine, kIndented };
std::string json(const Report& report, JsonStyle style);

}  // namespace Nimbo
