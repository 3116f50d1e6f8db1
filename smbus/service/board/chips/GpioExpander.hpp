// SPDX-License-Identifier: Apache-2.0
//
// The pins of an expander built of 8-bit banks, and the registers that govern them: an input port
// shows the pins' levels, exclusive-or the polarity bits, whatever drives them; an output bit
// drives its pin where the configuration bit is 0.
//
// Pins: "IO0_0" to "IO<banks-1>_7", in and out as configured.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "smbus/service/board/Net.hpp"

namespace SmbusService::Board {

class GpioExpander {
 public:
  static constexpr unsigned kMaxBanks = 5;

  enum class Port : uint8_t { kInput, kOutput, kPolarity, kConfiguration };

  GpioExpander(unsigned banks, uint8_t firstOutput);

  [[nodiscard]] unsigned banks() const { return banks_; }
  [[nodiscard]] uint8_t get(Port port, unsigned bank) const;

  // A write to an input port is lost.
  void set(Port port, unsigned bank, uint8_t value);

  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted);

 private:
  struct Bank {
    uint8_t output;
    uint8_t polarity = 0x00;
    uint8_t configuration = 0xFF;  // 1: input
    uint8_t connected = 0x00;
    std::array<Pin, 8> pins;
  };

  [[nodiscard]] static uint8_t levels(const Bank& bank);
  static void drive(Bank& bank);

  unsigned banks_;
  std::array<Bank, kMaxBanks> bank_;
};

}  // namespace SmbusService::Board
