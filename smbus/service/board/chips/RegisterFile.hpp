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
//   "registers"    { register: value }; a list or a text fills the registers from there on
//   "readOnly"     registers that writes leave alone: [ "0x10", "0x20-0x2F" ]
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

class RegisterFile {
 public:
  explicit RegisterFile(Settings& settings);

  [[nodiscard]] size_t size() const { return values_.size(); }
  [[nodiscard]] unsigned bytes() const { return bytes_; }  // of one register

  [[nodiscard]] uint16_t get(uint8_t number) const { return values_[number]; }
  void set(uint8_t number, uint16_t value) { values_[number] = value; }
  [[nodiscard]] bool readOnly(uint8_t number) const { return readOnly_[number]; }

  // How far to shift the byte that comes `index`-th on the bus.
  [[nodiscard]] unsigned shift(unsigned index) const {
    return 8 * (bigEndian_ ? bytes_ - 1 - index : index);
  }

 private:
  void fill(const Item& contents, uint32_t first);

  unsigned bytes_;
  bool bigEndian_;
  std::vector<uint16_t> values_;
  std::vector<bool> readOnly_;
};

}  // namespace SmbusService::Board
