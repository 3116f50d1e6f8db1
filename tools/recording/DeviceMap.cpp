// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/DeviceMap.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include "config/JsonValue.hpp"

namespace Nimbo {

namespace {

using Config::member;
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

Registers registersOf(const Value& device) {
  const auto* const row = std::ranges::find(
      kDrivers, std::string_view(device["driver"].GetString()), &DriverRow::driver);
  return row == kDrivers.end() ? Registers::kPlain : row->registers;
}

uint32_t number(const Value& node, const char* key) {
  const Value* value = member(&node, key);
  return value == nullptr ? 0 : value->GetUint();
}

uint32_t addressOf(const Value& device) {
  const Value* address = member(&device, "address");
  return address == nullptr ? 0 : number(*address, "address");
}

// The elements of a list, none if there is no such list.
template <typename Action>
void forEach(const Value& node, const char* key, Action action) {
  if (const Value* list = member(&node, key)) {
    std::for_each(list->Begin(), list->End(), action);
  }
}

}  // namespace

DeviceMap::DeviceMap(const Value& topology) {
  for (const Value& controller : topology.GetArray()) {
    addController(controller);
  }
}

const KnownDevice* DeviceMap::find(const Location& location) const {
  const auto found = devices_.find(location);
  return found == devices_.end() ? nullptr : &found->second;
}

void DeviceMap::addController(const Value& controller) {
  SmbusService::BusKey key;
  if (!Smbus::MasterType_Parse(controller["type"].GetString(), &key.master)) {
    return;  // its devices are no SMBus devices
  }
  const Value* simulated = member(&controller, "simulated");
  if (simulated != nullptr && simulated->IsTrue()) {
    key.master = Smbus::SimulatedI2C;
  }
  key.controller = number(controller, "pci");
  key.bus = number(controller, "id");
  addBus(controller, {key, {}});
  forEach(controller, "accelerators", [&](const Value& accelerator) {
    key.accelerator = number(accelerator, "id");
    forEach(accelerator, "busses", [&](const Value& bus) {
      key.bus = number(bus, "id");
      addBus(bus, {key, {}});
    });
  });
}

void DeviceMap::addBus(const Value& bus, const Numbers& numbers) {
  forEach(bus, "devices", [&](const Value& device) {
    devices_.insert({{numbers.bus, numbers.path, addressOf(device)},
                     {device["label"].GetString(), registersOf(device)}});
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
    behind.path.push_back({addressOf(*chip), number(channel, "id")});
    addBus(channel, behind);
  });
}

}  // namespace Nimbo
