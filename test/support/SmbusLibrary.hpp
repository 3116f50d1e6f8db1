// SPDX-License-Identifier: Apache-2.0
//
// The library as it runs on a board, with the scripted SMBus service at the other end of its
// socket: started, and with a topology loaded.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Ham/NimboSmbusHam.hpp"
#include "test/support/ScriptedService.hpp"

namespace Doubles {

// The text of a request message: one request, or several in order. `fields` are those that say
// what is done and where; `controller` those that say through what.
constexpr const char* kPlainI2c = "controllerAddr: 0 mastertype: I2C";
std::string request(std::string_view fields, std::string_view controller = kPlainI2c);

class SmbusLibrary {
 public:
  explicit SmbusLibrary(const std::string& topology);

  // A new HAM, initialised, for a device that the topology describes; or for another description.
  static Ham::NimboSmbusHam& hamOf(uint32_t did);
  static Ham::NimboSmbusHam* hamOf(const Drivers::DriverArgs& args);

  ScriptedService service;
};

}  // namespace Doubles
