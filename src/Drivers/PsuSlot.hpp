// SPDX-License-Identifier: Apache-2.0
//
// A power-supply bay: whether a supply is in it, which one (serial number and model, read in one of
// six ways), and the descriptor that goes with the model. docs/drivers/PsuSlot.md lists the
// arguments.
#pragma once

#include <memory>
#include <string>

#include "Components/Gpio.hpp"
#include "Components/HardwareDevice.hpp"
#include "Components/Slot.hpp"

namespace Drivers {

class PsuSlot : public Component::HardwareDevice {
 public:
  class Slot;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  // "psuId" is 1 or 2.
  Component::LogicalDevice::Slot* newSlot(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;
};

// What a supply is called.
struct PsuIdentity {
  std::string serial;
  std::string model;

  bool operator==(const PsuIdentity& other) const = default;
};

class PsuSlot::Slot : public Component::LogicalDevice::Slot {
 public:
  // The owner is borrowed; its HAM serves every register read.
  Slot(PsuSlot* owner, uint8_t psuId, const ArgMap& args);

  // 1 when both lines are there and say that nothing is; the descriptor is the caller's to free.
  pl_status getPresence(char** fdl) override;

  // The ways to identify a supply; outputs of a failure are not to be used.
  pl_status readSerialAndModelPmbus(std::string& serial, std::string& model);
  pl_status readSerialAndModelIpmi(std::string& serial, std::string& model);
  pl_status readSerialAndModelIpmitool(std::string& serial, std::string& model);
  pl_status readSerialAndModelIpmitoolRaw(std::string& serial, std::string& model);
  // Bay 1 looks at bit 0 of a status byte; bay 2 at a bit that a byte does not have, and so is
  // always taken as filled.
  pl_status readSerialAndModelWedge(std::string& serial, std::string& model);
  pl_status readSerialAndModelTlv(std::string& serial, std::string& model);

 private:
  using Reader = pl_status (Slot::*)(std::string& serial, std::string& model);

  // A line with its own polarity; none when its register is not given.
  struct Line {
    std::unique_ptr<Component::LogicalDevice::Gpio> gpio;
    bool activeLow = false;

    pl_status read(bool* value) const;
  };

  struct Method;
  static const Method kMethods[];

  Line lineOf(const char* regKey, const char* bitKey, const char* activeLowKey) const;
  void readModels();
  void chooseMethod();
  void requireMethodArg(const Method& method, const char* key) const;
  std::string ipmiCommand() const;
  // Asks both lines, where there are both: of a supply without power the identity is known then.
  pl_status readLines(PsuIdentity& identity) const;
  pl_status readIdentity(PsuIdentity& identity);
  std::string describe(const PsuIdentity& identity) const;
  std::string filled(const std::string& format, const PsuIdentity& identity) const;

  PsuSlot* owner_;
  uint8_t psuId_;
  ArgMap slotArgs_;
  const Method* method_ = nullptr;
  Line presence_;
  Line status_;
  ArgMap models_;  // descriptor template by model
  std::string command_;
  PsuIdentity cached_;
  std::string cachedFdl_;  // empty: none
};

}  // namespace Drivers
