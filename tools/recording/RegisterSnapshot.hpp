// SPDX-License-Identifier: Apache-2.0
//
// What the registers of one live device hold, read and never written. Which of them are read
// depends on the device: some change by being read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Nimbo {

// A device's registers. Nothing: it refused.
class RegisterSource {
 public:
  virtual ~RegisterSource() = default;
  virtual std::optional<uint8_t> byte(uint8_t number) = 0;
  virtual std::optional<uint16_t> word(uint8_t number) = 0;  // the low byte first on the bus
};

struct RegisterSnapshot {
  unsigned width = 8;  // bits of a register
  std::map<unsigned, uint16_t> values;
  std::string leftOut;  // why the device was not read at all; empty: it was
};

// `driver` is the name of its driver in the topology. A device of which none of the first registers
// answers has none.
RegisterSnapshot takeSnapshot(const std::string& driver, RegisterSource& source);

}  // namespace Nimbo
