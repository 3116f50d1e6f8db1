// SPDX-License-Identifier: Apache-2.0
//
// What this board's build of the library knows by name: its drivers and its access methods.
#include "Drivers/Dummy.hpp"
#include "Drivers/GenericPCA9555.hpp"
#include "Drivers/GenericSmbusMux.hpp"
#include "Drivers/Halvorsa/EmersonPmbus.hpp"
#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"
#include "Drivers/Halvorsa/HalvorsaPCA9555.hpp"
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"
#include "Drivers/Halvorsa/LedCPLD.hpp"
#include "Drivers/Halvorsa/XcvrCPLD.hpp"
#include "Drivers/Halvorsa/XcvrExpander.hpp"
#include "Drivers/Ipmi.hpp"
#include "Drivers/MultiSlot.hpp"
#include "Drivers/Pmbus.hpp"
#include "Drivers/PsuSlot.hpp"
#include "Drivers/Registry.hpp"
#include "Drivers/SmbusProxyDriver.hpp"
#include "Ham/Ham.hpp"
#include "Ham/NimboSmbusHam.hpp"
#include "Ham/SimHam.hpp"

namespace Drivers {

// The second name of a pair with one factory is an alias of the first. The Z and T variants of the
// board's chips are not here on purpose: this board has none.
std::map<std::string, DriverFactory> drivers = {
    {"Dummy", Dummy::create},
    {"GpioDriver", Dummy::create},  // a device whose only use is its GPIO lines
    {"SmbusProxyDriver", SmbusProxyDriver::create},
    {"GenericSmbusMux", GenericSmbusMux::create},
    {"PCA9548", GenericSmbusMux::create},
    {"Pmbus", Pmbus::create},
    {"PsuSlot", PsuSlot::create},
    {"HalvQCPLD", HalvorsaQCPLD::create},
    {"MultiSlot", MultiSlot::create},
    {"GenericPCA9555", GenericPCA9555::create},
    {"HalvorsaPCA9555", HalvorsaPCA9555::create},
    {"HalvorsaPsoc", HalvorsaPsoc::create},
    {"HalvPsuPCA9555", HalvPsuPCA9555::create},
    {"EmersonPmbus", EmersonPmbus::create},
    {"HalvorsaSFP", HalvorsaSFP::create},
    {"HalvSPCA9555", HalvSQSFP::create},  // the expander's name, the class of its ports
    {"HalvCLedCPLD", HalvCLedCPLD::create},
    {"HalvYQSFP", HalvYQSFP::create},
    {"HalvYCPLD", HalvorsaYCPLD::create},
    {"Ipmi", Ipmi::create},
};

}  // namespace Drivers

namespace Ham {

std::map<std::string, HamFactory> hams = {
    {"NimboSmbus", NimboSmbusHam::create},
    {"SimHam", SimHam::create},
};

}  // namespace Ham
