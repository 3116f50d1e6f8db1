// SPDX-License-Identifier: Apache-2.0
//
// What differs between two looks at the same devices.
#pragma once

#include <string>

#include "tools/Report.hpp"

namespace Nimbo {

// Two reports of the same devices, the later one cut down to those that have changed: another
// status or condition, or another value. Numbers with a unit drift, and do not count.
struct Changes {
  Report report;
  std::string lines;  // one a device, each ends in '\n'
};

Changes changes(const Report& before, const Report& after);

}  // namespace Nimbo
