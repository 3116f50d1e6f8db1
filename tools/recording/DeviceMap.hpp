// SPDX-License-Identifier: Apache-2.0
//
// The devices of a board description's topology, by the way to them: bus, muxes, address.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <rapidjson/document.h>

#include "smbus/service/BusKey.hpp"
#include "smbus/service/recording/Route.hpp"

namespace Nimbo {

// What is known of the registers of a device.
enum class Registers { kPlain, kPmbus, kPca9555, kPca9698 };

// Of the devices that a driver is for.
Registers registersOf(std::string_view driver);

struct Location {
  SmbusService::BusKey bus;
  SmbusService::Recording::Path path;
  uint32_t address = 0;

  auto operator<=>(const Location&) const = default;
};

struct KnownDevice {
  std::string label;
  Registers registers = Registers::kPlain;
};

class DeviceMap {
 public:
  // Of a topology that the board description's check has accepted.
  explicit DeviceMap(const rapidjson::Value& topology);

  // Null: the topology has none there.
  const KnownDevice* find(const Location& location) const;
  bool has(std::string_view label) const;

 private:
  struct Numbers {
    SmbusService::BusKey bus;
    SmbusService::Recording::Path path;
  };

  void addController(const rapidjson::Value& controller);
  void addBus(const rapidjson::Value& bus, const Numbers& numbers);
  void addMux(const rapidjson::Value& bus, const rapidjson::Value& mux, const Numbers& numbers);

  std::map<Location, KnownDevice> devices_;
};

}  // namespace Nimbo
