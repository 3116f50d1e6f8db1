// SPDX-License-Identifier: Apache-2.0
//
// Devices as their drivers make them, over a double of the HAM.
#pragma once

#include <gtest/gtest.h>

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

}  // namespace Doubles
