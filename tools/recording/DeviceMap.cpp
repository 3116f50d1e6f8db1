// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/DeviceMap.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/recording/TopologyNode.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;

struct DriverRow {
  std::string_view driver;
  Registers registers;
};

constexpr std::array kDrivers{
    DriverRow{"EmersonPmbus", Registers::kPmbus},
    DriverRow{"GenericPCA9555", Registers::kPca9555},
    DriverRow{"HalvPsuPCA9555", Registers::kPca9555},
    DriverRow{"HalvSPCA9555", Registers::kPca9555},
    DriverRow{"HalvYQSFP", Registers::kPca9698},
    DriverRow{"HalvorsaPCA9555", Registers::kPca9555},
    DriverRow{"HalvorsaSFP", Registers::kPca9698},
    DriverRow{"Pmbus", Registers::kPmbus},
};

}  // namespace

Registers registersOf(std::string_view driver) {
  const auto* const row = std::ranges::find(kDrivers, driver, &DriverRow::driver);
  return row == kDrivers.end() ? Registers::kPlain : row->registers;
}

DeviceMap::DeviceMap(const Value& topology) {
  for (const Value& controller : topology.GetArray()) {
    addController(controller);
  }
}

const KnownDevice* DeviceMap::find(const Location& location) const {
  const auto found = devices_.find(location);
  return found == devices_.end() ? nullptr : &found->second;
}

bool DeviceMap::has(std::string_view label) const {
  return std::ranges::any_of(devices_,
                             [&](const auto& device) { return device.second.label == label; });
}

void DeviceMap::addController(const Value& controller) {
  SmbusService::BusKey key;
  if (!Smbus::MasterType_Parse(controller["type"].GetString(), &key.master)) {
    return;  // its devices are no SMBus devices
  }
  const Value* simulated = Config::member(&controller, "simulated");
  if (simulated != nullptr && simulated->IsTrue()) {
    key.master = Smbus::SimulatedI2C;
  }
  key.controller = numberOf(controller, "pci");
  key.bus = numberOf(controller, "id");
  addBus(controller, {key, {}});
  forEach(controller, "accelerators", [&](const Value& accelerator) {
    key.accelerator = numberOf(accelerator, "id");
    forEach(accelerator, "busses", [&](const Value& bus) {
      key.bus = numberOf(bus, "id");
      addBus(bus, {key, {}});
    });
  });
}

void DeviceMap::addBus(const Value& bus, const Numbers& numbers) {
  forEach(bus, "devices", [&](const Value& device) {
    devices_.insert({{numbers.bus, numbers.path, addressOf(device)},
                     {device["label"].GetString(), registersOf(device["driver"].GetString())}});
  });
  forEach(bus, "muxes", [&](const Value& mux) { addMux(bus, mux, numbers); });
}

void DeviceMap::addMux(const Value& bus, const Value& mux, const Numbers& numbers) {
  const Value& devices = bus["devices"];
  const auto* const chip = std::find_if(devices.Begin(), devices.End(), [&](const Value& device) {
    return device["did"].GetUint() == mux["did"].GetUint();
  });
  forEach(mux, "busses", [&](const Value& channel) {
    Numbers behind = numbers;
    behind.path.push_back({addressOf(*chip), numberOf(channel, "id")});
    addBus(channel, behind);
  });
}

}  // namespace Nimbo
