// SPDX-License-Identifier: Apache-2.0
//
// The registers of a plain chip: 8 or 16 bits wide each, some of them read-only, with the bytes of
// a wide one in the chip's order.
//
// Settings:
//   "size"         number of registers, 1 to 256 (256)
//   "width"        8 or 16 bits (8)
//   "byteOrder"    "big" or "little": which byte of a wide register comes first ("big")
//   "fill"         what every register holds at first (0)
//   "registers"    { register: value }; a list fills the registers from there on, and so do the
//                  characters of a text that is no number
//   "readOnly"     registers that writes leave alone: [ "0x10", "0x20-0x2F" ]
//
// Pins: "in1.13" shows its level in bit 13 of register 1, whatever is written there; "out1.14"
// drives what bit 14 of register 1 holds. Registers may also be written in hexadecimal, "in0x0A.0".
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/Net.hpp"
#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

class RegisterFile {
 public:
  explicit RegisterFile(Settings& settings);

  [[nodiscard]] size_t size() const { return values_.size(); }
  [[nodiscard]] unsigned bytes() const { return bytes_; }  // of one register

  [[nodiscard]] uint16_t get(uint8_t number) const;
  void set(uint8_t number, uint16_t value);
  // Past what is read-only; none, false: there is no such register.
  [[nodiscard]] std::optional<Register> peek(uint32_t number) const;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value);
  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted);
  [[nodiscard]] bool readOnly(uint8_t number) const { return readOnly_[number]; }

  // How far to shift the byte that comes `index`-th on the bus.
  [[nodiscard]] unsigned shift(unsigned index) const {
    return 8 * (bigEndian_ ? bytes_ - 1 - index : index);
  }

 private:
  struct BitPin {
    uint8_t number;  // the register
    unsigned bit;
    Pin pin;
  };

  void fill(const Item& contents, uint32_t first);

  unsigned bytes_;
  bool bigEndian_;
  std::vector<uint16_t> values_;
  std::vector<bool> readOnly_;
  std::vector<BitPin> inputs_;
  std::vector<BitPin> outputs_;
};

}  // namespace SmbusService::Board
