// SPDX-License-Identifier: Apache-2.0
//
// A chip of the virtual board, as its bus sees it: one byte at a time, with START, repeated START,
// acknowledge and STOP (NXP UM10204 section 3.1, SMBus 3.0 section 4).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "smbus/service/board/BoardClock.hpp"

namespace SmbusService::Board {

class Net;

// A physical value at a chip.
struct Quantity {
  std::string name;
  std::string unit;  // empty for a plain number, and for one that is 0 or 1
  double least;
  double most;
  std::function<double()> get;
  std::function<void(double)> set;  // none: it cannot be set
};

// A register's contents.
struct Register {
  uint32_t value = 0;
  unsigned bits = 8;  // how wide it is
};

// Called by one thread at a time: the bus's lock is held for a whole transfer. A chip hears only
// transfers to its own address. Between two STOPs a chip sees
//   start(read) [write... | read...] { start(read) [write... | read...] } stop
// where a start() after the first is a repeated START.
class Chip {
 public:
  Chip() = default;
  Chip(const Chip&) = delete;
  Chip& operator=(const Chip&) = delete;
  virtual ~Chip() = default;

  // The chip's address with its direction bit has been sent. False: it is not acknowledged, and
  // the rest of the transfer until the next START does not concern the chip.
  [[nodiscard]] virtual bool start(bool read) = 0;

  // A byte from the master. False: it is not acknowledged.
  [[nodiscard]] virtual bool write(uint8_t byte) = 0;

  // The next byte for the master. Reading has no end: what a chip has nothing for is 0xFF, the
  // level of released lines.
  [[nodiscard]] virtual uint8_t read() = 0;

  virtual void stop() = 0;

  // The chip has got its supply again and begins anew, as far as that matters to its bus.
  virtual void powerOn() {}

  // Connects a pin of the chip to a net, which outlives the chip: an input follows it from now
  // on, an output drives it. `inverted`: the pin is high where the net is low. False: the chip has
  // no such pin.
  [[nodiscard]] virtual bool connect(std::string_view pin, Net& net, bool inverted);

  // A net has changed, perhaps one of the chip's: brings what depends on its inputs, its outputs
  // above all, up to date. Called without a transfer under way.
  virtual void settle() {}

  // What around the chip can be looked at and changed while the board runs: temperatures, loads,
  // faults. The functions live as long as the chip.
  [[nodiscard]] virtual std::vector<Quantity> quantities();

  // A register as the chip would tell it, looked at past the bus; none: it has no such register, or
  // one that is no number.
  [[nodiscard]] virtual std::optional<Register> peek(uint32_t number);

  // Puts a value that fits into a register that is there, read-only ones included. False: its
  // contents follow from something else, and cannot be put there.
  [[nodiscard]] virtual bool poke(uint32_t number, uint32_t value);

  // How long the chip has held SCL low since the last call.
  [[nodiscard]] Time takeHold() { return std::exchange(hold_, Time::zero()); }

 protected:
  static constexpr Time kForever = Time::max();

  // Holds SCL low for a while after the byte at hand, kForever for good.
  void hold(Time duration) { hold_ = duration; }

 private:
  Time hold_{0};
};

}  // namespace SmbusService::Board
