// SPDX-License-Identifier: Apache-2.0
//
// The drivers by name. The table is filled when the library is loaded and never changes.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "Components/DeviceBase.hpp"
#include "Drivers/Drivers.hpp"

namespace Drivers {

// Makes the device of a description; null, with a trace, on failure. A container's HAM is null.
using DriverFactory = std::function<Component::DeviceBase*(const DriverArgs&, Ham::Ham*)>;

extern std::map<std::string, DriverFactory> drivers;

}  // namespace Drivers
