// SPDX-License-Identifier: Apache-2.0
//
// What this board's build of the library knows by name: its drivers and its access methods.
#include "Drivers/Dummy.hpp"
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"
#include "Drivers/Registry.hpp"
#include "Ham/Ham.hpp"
#include "Ham/SimHam.hpp"

namespace Drivers {

std::map<std::string, DriverFactory> drivers = {
    {"Dummy", Dummy::create},
    {"GpioDriver", Dummy::create},  // a device whose only use is its GPIO lines
    {"HalvorsaPsoc", HalvorsaPsoc::create},
};

}  // namespace Drivers

namespace Ham {

std::map<std::string, HamFactory> hams = {
    {"SimHam", SimHam::create},
};

}  // namespace Ham
