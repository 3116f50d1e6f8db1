// SPDX-License-Identifier: Apache-2.0
//
// A chip that speaks SMBus commands with packet error checking (SMBus 3.0 section 6.4): it knows
// how many bytes belong to each command, so it can tell the PEC from data. A model answers whole
// commands and never sees a PEC:
//
//   write without PEC   the command is carried out at the STOP
//   write with PEC      a wrong PEC is not acknowledged and the command is not carried out
//   read                the answer, after it its PEC, after that 0xFF
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/Pec.hpp"

namespace SmbusService::Board {

class CommandChip : public Chip {
 public:
  static constexpr size_t kMaxBlock = 255;

  // The chip must know its own address: it is among the bytes that the PEC covers.
  explicit CommandChip(uint8_t address) : address_(address) {}

  [[nodiscard]] bool start(bool read) final;
  [[nodiscard]] bool write(uint8_t byte) final;
  [[nodiscard]] uint8_t read() final;
  void stop() final;

  // From now on every PEC that the chip sends is wrong, or right again.
  void spoilPec(bool spoilt) { pecSpoilt_ = spoilt; }

 protected:
  static constexpr size_t kBlock = SIZE_MAX;  // a count byte, then that many

  enum class Fault : uint8_t { kUnknownCommand, kWrongPec, kTooFewBytes };

  // Whether the chip acknowledges its address now.
  [[nodiscard]] virtual bool answers() { return true; }

  // A write was refused for this.
  virtual void faulted(Fault /*fault*/) {}

  // How many data bytes the master writes with `command`, or kBlock. None: the chip does not know
  // the command, and does not acknowledge it.
  [[nodiscard]] virtual std::optional<size_t> writeSize(uint8_t command) const = 0;

  // Carries out a write; a block comes without its count. Returns false if it is refused, which
  // the chip can only say where a PEC was sent.
  [[nodiscard]] virtual bool writeCommand(uint8_t command, std::span<const uint8_t> data) = 0;

  // Answers a read, also that of a process call, with `data` written before it. A block's answer
  // begins with its count. Returns the number of bytes put into `answer`; 0: nothing to say.
  [[nodiscard]] virtual size_t readCommand(uint8_t command, std::span<const uint8_t> data,
                                           std::span<uint8_t, kMaxBlock + 1> answer) = 0;

 private:
  [[nodiscard]] size_t expected() const;
  [[nodiscard]] bool acceptCommand(uint8_t byte);
  [[nodiscard]] bool acceptPec(uint8_t byte);
  bool carryOut();

  uint8_t address_;
  bool pecSpoilt_ = false;

  // The write under way. A read after a STOP repeats the last command.
  bool writing_ = false;
  bool commandNext_ = false;
  uint8_t command_ = 0;
  size_t size_ = 0;  // bytes of data_ so far
  std::array<uint8_t, kMaxBlock + 1> data_{};

  // The answer under way.
  std::array<uint8_t, kMaxBlock + 1> answer_{};
  size_t answerSize_ = 0;
  size_t answerNext_ = 0;

  bool idle_ = true;
  Pec pec_;
};

}  // namespace SmbusService::Board
