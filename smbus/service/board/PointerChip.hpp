// SPDX-License-Identifier: Apache-2.0
//
// The usual shape of a chip with registers: the first byte written after a START selects a
// register, those that follow are data for it, and a read goes on from the register selected last.
#pragma once

#include "smbus/service/board/Chip.hpp"

namespace SmbusService::Board {

class PointerChip : public Chip {
 public:
  [[nodiscard]] bool start(bool read) override {
    pointerNext_ = !read;
    begin();
    return true;
  }
  [[nodiscard]] bool write(uint8_t byte) override {
    if (!pointerNext_) {
      return store(byte);
    }
    pointerNext_ = false;
    return select(byte);
  }
  [[nodiscard]] uint8_t read() override { return fetch(); }
  void stop() override {}

 protected:
  // A START: bring what is read in this transfer up to date.
  virtual void begin() {}

  // Each returns whether the chip acknowledges the byte.
  [[nodiscard]] virtual bool select(uint8_t pointer) = 0;
  [[nodiscard]] virtual bool store(uint8_t byte) = 0;

  [[nodiscard]] virtual uint8_t fetch() = 0;

 private:
  bool pointerNext_ = false;
};

}  // namespace SmbusService::Board
