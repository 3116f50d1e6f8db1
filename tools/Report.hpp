// SPDX-License-Identifier: Apache-2.0
//
// What was observed, for people and for programs. docs/nimbo.md describes the JSON.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tools/Device.hpp"

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

// A table for each kind that has devices.
std::string tables(const Report& report, bool colours);

// One JSON object, on one line or indented; ends in '\n'.
enum class JsonStyle { kLine, kIndented };
std::string json(const Report& report, JsonStyle style);

}  // namespace Nimbo
