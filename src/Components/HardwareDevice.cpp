// SPDX-License-Identifier: Apache-2.0
#include "Components/HardwareDevice.hpp"

#include "Components/Gpio.hpp"
#include "Utils/Host.hpp"
#include "Utils/Simulation.hpp"

namespace Component {

namespace {

Utils::ExpectedVals emptyExpectedValues;

// Tells the simulated devices of one driver apart: the "name" of the description. A device that
// comes from the topology has no description of its own, and no name.
std::string simulationName(const Drivers::DriverArgs& args) {
  if (!Utils::inSimulation() || args.json == nullptr) {
    return "";
  }
  rapidjson::Document json;
  json.Parse(args.json);
  CHECK_TEXT(json.HasMember("name"), "json.HasMember( \"name\" )");
  return json["name"].GetString();
}

void introduce(HardwareDevice& device, const Drivers::DriverArgs& args, const std::string& name) {
  if (device.ham == nullptr) {
    return;
  }
  device.ham->setDriverName(args.driver, name);
  Utils::ExpectedVals* values = device.expectedValues();
  device.ham->setExpected(values != nullptr ? values : &emptyExpectedValues);
}

}  // namespace

LogicalDevice::Gpio* HardwareDevice::newGpio(const DriverArgs& args) {
  return new LogicalDevice::RegGpio(this, args);
}

HardwareDevice* HardwareDevice::create(DriverArgs& args, Ham::Ham* ham) {
  return dynamic_cast<HardwareDevice*>(createDevice(args, ham));
}

DeviceBase* HardwareDevice::createDevice(DriverArgs& args, Ham::Ham* ham) {
  if (DeviceBase* known = findDevice(args)) {
    return known;
  }
  if (ham == nullptr && args.provideHam) {
    TRACE(0, "creating Ham");
    ham = Ham::createHam(args);
    if (ham == nullptr) {
      TRACE(0, "failed to create Ham");
      return nullptr;
    }
  }
  auto* device = dynamic_cast<HardwareDevice*>(callDriverFactoryFunc(args, ham));
  if (device == nullptr) {
    TRACE(0, "factory function returned a null object");
    return nullptr;
  }
  const std::string name = simulationName(args);
  device->ham = ham;
  introduce(*device, args, name);
  device->init();
  TRACE(0, "%s device created", args.driver.c_str());
  devices[args.did] = device;
  return device;
}

}  // namespace Component
