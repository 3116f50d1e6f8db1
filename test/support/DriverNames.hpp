// SPDX-License-Identifier: Apache-2.0
//
// The names that a device description may give its driver.
#pragma once

namespace Doubles {

constexpr const char* kDriverNames[] = {
    "Dummy",        "EmersonPmbus",    "GenericPCA9555", "GenericSmbusMux", "GpioDriver",
    "HalvCLedCPLD", "HalvPsuPCA9555",  "HalvQCPLD",      "HalvSPCA9555",    "HalvYCPLD",
    "HalvYQSFP",    "HalvorsaPCA9555", "HalvorsaPsoc",   "HalvorsaSFP",     "Ipmi",
    "MultiSlot",    "PCA9548",         "Pmbus",          "PsuSlot",         "SmbusProxyDriver",
};

}  // namespace Doubles
