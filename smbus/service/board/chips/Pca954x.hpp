// SPDX-License-Identifier: Apache-2.0
//
// The I2C switches NXP PCA9548A (eight channels) and PCA9546A (four). They have one register, the
// channel mask: every byte written replaces it, every byte read returns it, and what was written
// joins the channels after the STOP only. A low pulse on RESET, however short, closes all channels;
// as long as it is low the chip does not answer.
//
// Settings: none of its own; "channels", the list of what sits behind them, is the board's.
// Pins: "reset" in, active low.
#pragma once

#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Net.hpp"
#include "smbus/service/board/Segment.hpp"

namespace SmbusService::Board {

class Pca954x : public Mux {
 public:
  explicit Pca954x(unsigned channels) : Mux(channels) {}

  [[nodiscard]] bool start(bool read) override;
  [[nodiscard]] bool write(uint8_t byte) override;
  [[nodiscard]] uint8_t read() override { return control_; }
  void stop() override { open_ = control_; }
  void powerOn() override { close(); }
  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override;
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override;

  [[nodiscard]] uint8_t open() override;

 private:
  void watchReset();
  void close() { control_ = open_ = 0; }

  uint8_t control_ = 0;
  uint8_t open_ = 0;
  Pin reset_;
  uint32_t resetChanges_ = 0;
};

[[nodiscard]] std::unique_ptr<Chip> makePca9546(Settings& settings, const ChipContext& context);
[[nodiscard]] std::unique_ptr<Chip> makePca9548(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
