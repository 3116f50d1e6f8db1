// SPDX-License-Identifier: Apache-2.0
//
// The 40-bit I/O expander NXP PCA9698: five banks. Bits 5 to 0 of the command byte choose a
// register; with bit 7 (AI) each byte moves on to the next bank of the same kind and from the last
// back to the first, without it to none.
//
//   0x00..0x04   r    input ports
//   0x08..0x0C   rw   output ports, 0x00 at first
//   0x10..0x14   rw   polarity inversion, 0x00 at first
//   0x18..0x1C   rw   configuration, 1 for an input, 0xFF at first
//   0x20..0x24   rw   interrupt mask, 0xFF at first
//   0x28         rw   OUTCONF, 0xFF at first
//   0x29         rw   ALLBNK, 0x80 at first
//   0x2A         rw   MODE, 0x02 at first
//
// The last four kinds are kept and have no effect: interrupts, open-drain outputs, the all-call
// address and output enable are not modelled. Reserved registers are not acknowledged.
//
// Settings: none. Pins: "IO0_0" to "IO4_7".
#pragma once

#include <array>
#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/PointerChip.hpp"
#include "smbus/service/board/chips/GpioExpander.hpp"

namespace SmbusService::Board {

class Pca9698 : public PointerChip {
 public:
  static constexpr unsigned kBanks = 5;

  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override {
    return pins_.connect(pin, net, inverted);
  }
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override;

 protected:
  [[nodiscard]] bool select(uint8_t pointer) override;
  [[nodiscard]] bool store(uint8_t byte) override;
  [[nodiscard]] uint8_t fetch() override;

 private:
  [[nodiscard]] uint8_t get(uint8_t number) const;
  void put(uint8_t number, uint8_t value);
  void advance();

  GpioExpander pins_{kBanks, 0x00};
  std::array<uint8_t, 0x2B> kept_ = firstKept();  // the registers that do not belong to pins
  uint8_t pointer_ = 0;
  bool autoIncrement_ = false;

  static std::array<uint8_t, 0x2B> firstKept();
};

[[nodiscard]] std::unique_ptr<Chip> makePca9698(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
