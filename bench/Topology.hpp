// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Bench {

// A topology with so many devices of one driver, numbered and labelled from 1, on the buses of one
// controller.
std::string topologyOf(unsigned devices, const std::string& driver);

// The description of one of them.
std::string descriptionOf(unsigned did, const std::string& driver, const std::string& driverArgs);

}  // namespace Bench
