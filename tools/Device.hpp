// SPDX-License-Identifier: Apache-2.0
//
// A device as this host has it: added to the library, read, and how each went.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/Kind.hpp"

namespace Nimbo {

// A call's end: a status, or an exception of the library or a refusal to add the device.
struct Outcome {
  pl_status status = PL_STATUS_OK;
  bool broken = false;  // no status was given at all
  std::string reason;   // of a failure, in the library's own words

  bool ok() const { return !broken && status == PL_STATUS_OK; }
  // An empty slot is an answer like any other.
  bool failed() const { return broken || (status != PL_STATUS_OK && status != PL_STATUS_EMPTY); }
};

// Calls the library and finds out why if that fails. The call may throw.
Outcome attempt(const std::function<pl_status()>& call);

struct Device {
  const Kind* kind;
  Entry entry;
  Record record = nullptr;  // null when the library refused it
  Outcome added;
};

// Adds a device to the library; a refusal is in the result's `added`.
Device addDevice(const Library& library, const Board& board, const Kind& kind, const Entry& entry);

// One look at a device. One reading per column of its kind; none when it was never added.
struct Observation {
  const Device* device;
  std::vector<Reading> readings;
  Outcome outcome;  // the first column's that failed, or else one's that found nothing there

  Verdict verdict() const;
  // "OK", "FAULT" ..., "ERROR" when there is no status.
  std::string status() const;
};

Observation observe(const Device& device);

}  // namespace Nimbo
