// SPDX-License-Identifier: Apache-2.0
//
// Fans, supplies, temperature sensors and fan bays that a management controller looks after: values
// looked up by name through an IPMI access method. All are read-only.
//
// Driver arguments: "hamType", the access method's type, required; "fruId", where the airflow is
// read, optional. docs/drivers/Ipmi.md lists those of the logical devices.
#pragma once

#include <memory>
#include <string>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Helpers.hpp"
#include "Ham/IpmiHam.hpp"

namespace Drivers {

class Ipmi : public Component::HardwareDevice {
 public:
  class Psu;
  class Fan;
  class TempSensor;
  class FanSlot;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  Component::LogicalDevice::TempSensor* newTempSensor(const DriverArgs& args) override;
  Component::LogicalDevice::Slot* newSlot(const DriverArgs& args) override;
  Component::LogicalDevice::Fan* newFan(const DriverArgs& args) override;
  Component::LogicalDevice::Psu* newPsu(const DriverArgs& args) override;

  // The text of the airflow sensor, or "unknownAirflowDirection".
  std::string airflowDirection();

 private:
  Ipmi(const ArgMap& args, std::shared_ptr<Ham::IpmiHam> access);

  std::string fruId_;  // may be empty
  ArgMap deviceArgs_;
  std::shared_ptr<Ham::IpmiHam> ham_;  // shared with every logical device
};

}  // namespace Drivers
