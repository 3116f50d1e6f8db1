// SPDX-License-Identifier: Apache-2.0
//
// The root of every device: an object that a driver makes from a device description, that lives
// until the process ends, and that makes the logical devices (fans, LEDs, ...) the host talks to.
#pragma once

#include <cstdint>
#include <map>

#include "Drivers/Drivers.hpp"

namespace Ham {
class Ham;
}

namespace Component {

namespace LogicalDevice {
class PoePort;
class TempSensor;
class Slot;
class SfpXcvr;
class QsfpXcvr;
class Led;
class Fan;
class Mux;
class Psu;
class SmbusProxy;
class Gpio;
}  // namespace LogicalDevice

class DeviceBase {
 public:
  using DriverArgs = Drivers::DriverArgs;

  // Called once, right after the device has been made.
  virtual void init() {}

  // A driver overrides what its device has; the rest throws NotImplementedException with the
  // operation's name. The caller owns what it gets.
  virtual LogicalDevice::PoePort* newPoePort(const DriverArgs& args);
  virtual LogicalDevice::TempSensor* newTempSensor(const DriverArgs& args);
  virtual LogicalDevice::Slot* newSlot(const DriverArgs& args);
  virtual LogicalDevice::SfpXcvr* newSfpXcvr(unsigned int id, const DriverArgs& args);
  virtual LogicalDevice::QsfpXcvr* newQsfpXcvr(unsigned int id, const DriverArgs& args);
  virtual LogicalDevice::Led* newLed(const DriverArgs& args);
  virtual LogicalDevice::Fan* newFan(const DriverArgs& args);
  virtual LogicalDevice::Mux* newMux(const DriverArgs& args, unsigned int channel);
  virtual LogicalDevice::Psu* newPsu(const DriverArgs& args);
  virtual LogicalDevice::SmbusProxy* newSmbusProxy(const DriverArgs& args);

  virtual ~DeviceBase() = default;

  // Makes, or finds, the device of a description text, and leaves the parsed description in `args`.
  // Null, with a trace, on failure.
  static DeviceBase* create(const char* json, DriverArgs& args);

  // The two steps that all creation shares: the device made earlier for this `did`, whatever driver
  // it was made with; and the registered factory of the driver. Null when there is none.
  static DeviceBase* findDevice(DriverArgs& args);
  static DeviceBase* callDriverFactoryFunc(DriverArgs& args, Ham::Ham* ham);

  // Every device made so far, by `did`.
  static std::map<uint32_t, DeviceBase*> devices;
};

}  // namespace Component
