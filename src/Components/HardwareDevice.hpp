// SPDX-License-Identifier: Apache-2.0
//
// A device with registers, reached through a hardware access method.
#pragma once

#include "Components/DeviceBase.hpp"
#include "Ham/Ham.hpp"
#include "Utils/ExpectedVal.hpp"

namespace Component {

class HardwareDevice : public DeviceBase {
 public:
  // One bit of one register, by default: "register" and "bitpos" of the arguments.
  virtual LogicalDevice::Gpio* newGpio(const DriverArgs& args);

  // The registers that the device has in simulation, with their starting values; null for none.
  virtual Utils::ExpectedVals* expectedValues() { return nullptr; }

  // Makes, or finds, the device of a description. It gets the given HAM or, unless the description
  // says otherwise, one of its own. Null, with a trace, on failure; null also when the device found
  // is none with registers.
  static HardwareDevice* create(DriverArgs& args, Ham::Ham* ham);

  Ham::Ham* ham = nullptr;  // lives as long as the device; null for a device that has none

 private:
  friend class DeviceBase;
  static DeviceBase* createDevice(DriverArgs& args, Ham::Ham* ham);
};

}  // namespace Component
