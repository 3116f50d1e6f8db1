// SPDX-License-Identifier: Apache-2.0
//
// The I2C switches NXP PCA9548A (eight channels) and PCA9546A (four). They have one register, the
// channel mask: every byte written replaces it, every byte read returns it, and what was written
// joins the channels after the STOP only (data sheet section 6.2). Reset closes all channels.
//
// Settings: none of its own; "channels", the list of what sits behind them, is the board's.
#pragma once

#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Segment.hpp"

namespace SmbusService::Board {

class Pca954x : public Mux {
 public:
  explicit Pca954x(unsigned channels) : Mux(channels) {}

  [[nodiscard]] bool start(bool /*read*/) override { return true; }
  [[nodiscard]] bool write(uint8_t byte) override;
  [[nodiscard]] uint8_t read() override { return control_; }
  void stop() override { open_ = control_; }

  [[nodiscard]] uint8_t open() const override { return open_; }

 private:
  uint8_t control_ = 0;
  uint8_t open_ = 0;
};

[[nodiscard]] std::unique_ptr<Chip> makePca9548(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
