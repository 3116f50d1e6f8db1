// SPDX-License-Identifier: Apache-2.0
//
// The PSoC microcontroller of the board: fans, temperatures and power control bits. Its registers
// are bytes; a transfer goes on with the next one, so a 16-bit value travels most significant byte
// first. Registers:
//
//   0x08        rw   power-cycle bits, latched
//   0x0A        rw   power-off bits, latched
//   0x20..0x25  r    temperatures, whole degrees, unsigned; 0 where there is no sensor
//   0x30 0x31   rw   configuration, latched
//   0x32        r    fan stall: bit n, fan n turns although it should and does not
//   0x33        rw   configuration, latched
//   0x3C        rw   16 bits: PWM duty of all fans, 1/100 %; above 10000 counts as 10000. It takes
//                    effect with its second byte
//   0x40..0x47  r    16 bits each: speeds, RPM; 0 where there is no fan
//
// All others read 0 and ignore writes. Before anybody writes it the duty is 40 %.
//
// Settings: those of FanPlant, and "duty", the duty at first in 1/100 % (4000). Quantities: those
// of FanPlant.
#pragma once

#include <array>
#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/PointerChip.hpp"
#include "smbus/service/board/chips/FanPlant.hpp"

namespace SmbusService::Board {

class Psoc : public PointerChip {
 public:
  Psoc(FanPlant plant, uint16_t duty);

  [[nodiscard]] std::vector<Quantity> quantities() override { return plant_.quantities(); }
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override;

 protected:
  void begin() override;
  [[nodiscard]] bool select(uint8_t pointer) override;
  [[nodiscard]] bool store(uint8_t byte) override;
  [[nodiscard]] uint8_t fetch() override { return registers_[pointer_++]; }

 private:
  [[nodiscard]] bool put(uint8_t number, uint8_t byte);
  void put16(uint8_t number, uint16_t value);
  void showPlant();

  FanPlant plant_;
  std::array<uint8_t, 256> registers_{};
  uint8_t pointer_ = 0;
  int64_t shown_ = -1;  // the plant's steps when the registers took over its state
};

[[nodiscard]] std::unique_ptr<Chip> makePsoc(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
