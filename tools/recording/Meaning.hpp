// SPDX-License-Identifier: Apache-2.0
//
// What an access of a device's register means: the register's name, and its value in the device's
// own terms.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/recording/DeviceMap.hpp"

namespace Nimbo {

// The bits of one bank of an expander.
struct PinBank {
  std::string registerName;      // "input", "output", "polarity inversion", "configuration" ...
  std::vector<std::string> set;  // the pins whose bit is 1: "IO0_3"
};

struct Meaning {
  std::string name;             // of the register; empty: not known
  std::optional<double> value;  // a number in `unit`
  std::string unit;
  std::optional<std::string> text;
  std::vector<PinBank> banks;
};

// A PMBus device's page and output voltage modes, as far as a recording has shown them.
class PmbusState {
 public:
  void learn(uint8_t command, std::string_view data, bool written);
  [[nodiscard]] std::optional<uint8_t> voutMode() const;

 private:
  uint8_t page_ = 0;
  std::map<uint8_t, uint8_t> modes_;  // by page
};

// `data` is what was read or written, without a count or a packet error code.
[[nodiscard]] Meaning pmbusMeaning(uint8_t command, std::string_view data, const PmbusState& state);
[[nodiscard]] Meaning expanderMeaning(Registers chip, uint8_t command, std::string_view data);

}  // namespace Nimbo
