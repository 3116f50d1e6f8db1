// SPDX-License-Identifier: Apache-2.0
//
// A container: several host-facing objects from one description. It has no registers itself.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Components/DeviceBase.hpp"
#include "pl/pl.h"

namespace Component {

class MultiDevice : public DeviceBase {
 public:
  // Makes, or finds, the container of a description; null, with a trace, on failure.
  static MultiDevice* create(DriverArgs& args);

  // The descriptions that the container makes its objects from.
  void deviceDriverArgsIs(std::map<std::string, std::string> texts);

  // The description under a key, owned by the container; null, with a trace, when there is none.
  const char* getDeviceDriverArg(std::string key);

  // Makes one object from the description under a key, keeps its record, be it null, and returns
  // it. A key without a description gives null and nothing is kept.
  pl_slot* addSlot(std::string key);
  pl_led* addLed(std::string key);
  pl_psu* addPsu(std::string key);
  pl_fan* addFan(std::string key);
  pl_xcvr* addXcvr(std::string key);
  pl_gpio* addGpio(std::string key);

 protected:
  std::vector<pl_slot*> slots_;
  std::vector<pl_led*> leds_;
  std::vector<pl_psu*> psus_;
  std::vector<pl_fan*> fans_;
  std::vector<pl_xcvr*> xcvrs_;
  std::vector<pl_gpio*> gpios_;
  std::map<std::string, std::string> deviceDriverArgs;

 private:
  friend class DeviceBase;
  static DeviceBase* createDevice(DriverArgs& args);
};

}  // namespace Component
