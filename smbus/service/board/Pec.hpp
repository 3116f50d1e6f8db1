// SPDX-License-Identifier: Apache-2.0
//
// The packet error code of SMBus 3.0 section 6.4: a CRC-8 with the polynomial x^8 + x^2 + x + 1
// over every byte of a transfer, the address bytes included.
#pragma once

#include <array>
#include <cstdint>

namespace SmbusService::Board {

class Pec {
 public:
  void reset() { crc_ = 0; }
  void add(uint8_t byte) { crc_ = kTable[crc_ ^ byte]; }

  // After the code itself has been added too, a transfer without an error gives 0.
  [[nodiscard]] uint8_t value() const { return crc_; }

 private:
  static constexpr auto kTable = [] {
    constexpr uint8_t kPolynomial = 0x07;
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
      auto crc = static_cast<uint8_t>(byte);
      for (int bit = 0; bit < 8; ++bit) {
        crc = static_cast<uint8_t>((crc << 1) ^ ((crc & 0x80) != 0 ? kPolynomial : 0));
      }
      table[byte] = crc;
    }
    return table;
  }();

  uint8_t crc_ = 0;
};

}  // namespace SmbusService::Board
