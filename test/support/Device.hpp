// SPDX-License-Identifier: Apache-2.0
//
// Devices as their drivers make them, over a double of the HAM.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "Components/HardwareDevice.hpp"

namespace Doubles {

// Driver arguments with these settings.
inline Drivers::DriverArgs settings(Drivers::ArgMap driverArgs) {
  Drivers::DriverArgs args;
  args.driverArgs = std::move(driverArgs);
  return args;
}

// A device that has not started; the HAM is borrowed.
template <class Driver>
std::unique_ptr<Driver> made(Ham::Ham& ham, Drivers::ArgMap driverArgs = {}) {
  auto* device = dynamic_cast<Driver*>(Driver::create(settings(std::move(driverArgs)), &ham));
  EXPECT_NE(device, nullptr);
  device->ham = &ham;
  return std::unique_ptr<Driver>(device);
}

// What the 8-bit registers of a simulated device start with; any other register fails the test.
inline std::map<unsigned, uint8_t> simulatedBytes(const Utils::ExpectedVals& values) {
  std::map<unsigned, uint8_t> bytes;
  for (const auto& [reg, value] : values) {
    EXPECT_TRUE(value.isNumber()) << "register " << reg;
    EXPECT_EQ(value.size(), 1u) << "register " << reg;
    EXPECT_LE(value.val(), 0xFFu) << "register " << reg;
    bytes[reg] = static_cast<uint8_t>(value.val());
  }
  return bytes;
}

}  // namespace Doubles
