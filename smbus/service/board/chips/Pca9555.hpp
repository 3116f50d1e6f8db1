// SPDX-License-Identifier: Apache-2.0
//
// The 16-bit I/O expander NXP PCA9555. The low three bits of the command byte choose a register:
//
//   0, 1   r    input ports 0 and 1
//   2, 3   rw   output ports, 0xFF at first
//   4, 5   rw   polarity inversion, 0x00 at first
//   6, 7   rw   configuration, 1 for an input, 0xFF at first
//
// Each byte read or written moves on to the other register of the pair, and so does the next
// transfer without a command byte. The interrupt output is not modelled.
//
// Settings: none. Pins: "IO0_0" to "IO1_7".
#pragma once

#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/PointerChip.hpp"
#include "smbus/service/board/chips/GpioExpander.hpp"

namespace SmbusService::Board {

class Pca9555 : public PointerChip {
 public:
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
  GpioExpander pins_{2, 0xFF};
  uint8_t pointer_ = 0;
};

[[nodiscard]] std::unique_ptr<Chip> makePca9555(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
