// SPDX-License-Identifier: Apache-2.0
//
// The requests of a recorded transaction in the board's own terms.
#pragma once

#include "smbus/service/recording/Record.hpp"
#include "tools/recording/DeviceMap.hpp"
#include "tools/recording/Meaning.hpp"

namespace Nimbo {

struct DecodedAccess {
  std::string bus;                 // "SCD bus 0"; empty: the request does not say
  std::vector<std::string> route;  // the muxes on the way: "Mux1=0x08"
  uint32_t address = 0;
  std::string label;      // of the device, or its address: "0x50"
  std::string operation;  // "read word"
  bool hasRegister = true;
  uint32_t number = 0;  // the register, or the byte that is sent
  bool writes = false;
  bool selects = false;             // belongs to the way to a device
  std::optional<std::string> data;  // read or written; none: it was not done, or nobody knows
  Meaning meaning;
};

class Decoder {
 public:
  explicit Decoder(DeviceMap devices) : devices_(std::move(devices)) {}

  // Records are to be given in their order: a PMBus device's pages and modes are remembered.
  std::vector<DecodedAccess> decode(const SmbusService::Recording::Record& record);

 private:
  std::string labelAt(const Location& location) const;
  DecodedAccess decode(const SmbusService::Recording::Record& record, int index);
  Meaning meaning(const Location& location, const DecodedAccess& access);

  const DeviceMap devices_;
  std::map<Location, PmbusState> pmbus_;
};

}  // namespace Nimbo
