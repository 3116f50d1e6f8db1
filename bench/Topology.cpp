// SPDX-License-Identifier: Apache-2.0
#include "bench/Topology.hpp"

namespace Bench {

namespace {

constexpr unsigned kDevicesPerBus = 100;

std::string device(unsigned did, const std::string& driver, const std::string& further) {
  return R"({"did": )" + std::to_string(did) + R"(, "driver": ")" + driver +
         R"(", "address": {"address": 78, "busTimeout": 5})" + further + "}";
}

// Puts a comma before all but the first of a list.
const char* comma(unsigned index) { return index == 0 ? "" : ", "; }

}  // namespace

std::string topologyOf(unsigned devices, const std::string& driver) {
  std::string text =
      R"([{"type": "SCD", "ham": "NimboSmbus", "pci": 0, "accelerators": [{"id": 0, "busses": [)";
  for (unsigned i = 0; i < devices; ++i) {
    const unsigned bus = i / kDevicesPerBus;
    const unsigned place = i % kDevicesPerBus;
    if (place == 0) {
      text += (bus == 0 ? "" : "]}, ") + (R"({"id": )" + std::to_string(bus)) + R"(, "devices": [)";
    }
    const std::string label = R"(, "label": "device)" + std::to_string(i + 1) + '"';
    text += comma(place) + device(i + 1, driver, label);
  }
  return text + "]}]}]}]";
}

std::string descriptionOf(unsigned did, const std::string& driver, const std::string& driverArgs) {
  return device(
      did, driver,
      R"(, "name": "device)" + std::to_string(did) + R"(", "driverArgs": {)" + driverArgs + "}");
}

}  // namespace Bench
