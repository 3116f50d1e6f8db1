// SPDX-License-Identifier: Apache-2.0
//
// Driver arguments: one device's description, parsed. docs/topology.md describes the text.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "Topology/AhamAddress.hpp"
#include "Utils/Json.hpp"

namespace Drivers {

// The `uid` of a description that names no component.
constexpr uint32_t kNoComponent = 0xFFFFFFFF;

using ArgMap = std::map<std::string, std::string>;

// A plain value. Fields that the text does not give keep what is said here. A text that breaks the
// format's rules stops the process on a check.
struct DriverArgs {
  std::string driver;           // key of the driver registry; empty when null in the text
  uint32_t uid = kNoComponent;  // component that the device stands for
  uint32_t did = 0;             // key of the device cache
  AhamAddress address{};        // where the device sits
  ArgMap driverArgs;            // the driver's own settings, each value as text
  const char* json = nullptr;   // the text parsed by parseJSON(text); borrowed from the caller
  bool isMultiDevice = false;   // a container of other devices
  ArgMap multiDeviceArgs;       // their descriptions by key; only for a container
  bool provideHam = true;       // whether the device gets an access method

  static std::shared_ptr<DriverArgs> fromJSON(const rapidjson::Value& value);

  void parseJSON(const rapidjson::Value& value);

  // False, with a trace, when the text is not JSON; nothing is changed then.
  bool parseJSON(const char* text);
};

}  // namespace Drivers
