// SPDX-License-Identifier: Apache-2.0
//
// A plain chip with up to 256 registers of 8 or 16 bits. A register beyond its size is not
// acknowledged; a write to a read-only one is acknowledged and lost. A wide register takes its
// value when its last byte has come.
//
// Settings and pins: those of RegisterFile, and the settings
//   "autoIncrement"  whether a transfer goes on with the next register, the first after the last
//                    one, or with the same one again (true)
//   "pec"            whether the chip checks and sends PECs; a register is then one command and a
//                    transfer ends with it (false). A chip without it takes a PEC as one more
//                    byte of data.
#pragma once

#include <memory>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/CommandChip.hpp"
#include "smbus/service/board/PointerChip.hpp"
#include "smbus/service/board/chips/RegisterFile.hpp"

namespace SmbusService::Board {

class RegisterChip : public PointerChip {
 public:
  RegisterChip(RegisterFile registers, bool autoIncrement)
      : registers_(std::move(registers)), autoIncrement_(autoIncrement) {}

  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override {
    return registers_.connect(pin, net, inverted);
  }
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override {
    return registers_.peek(number);
  }
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override {
    return registers_.poke(number, value);
  }

 protected:
  void begin() override;
  [[nodiscard]] bool select(uint8_t pointer) override;
  [[nodiscard]] bool store(uint8_t byte) override;
  [[nodiscard]] uint8_t fetch() override;

 private:
  void advance();

  RegisterFile registers_;
  bool autoIncrement_;
  uint8_t pointer_ = 0;
  unsigned index_ = 0;   // of the byte within the register
  unsigned staged_ = 0;  // the bytes of a wide register so far
  unsigned shown_ = 0;   // the register being read, as it was at its first byte
};

class PecRegisterChip : public CommandChip {
 public:
  PecRegisterChip(uint8_t address, RegisterFile registers)
      : CommandChip(address), registers_(std::move(registers)) {}

  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override {
    return registers_.connect(pin, net, inverted);
  }
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override {
    return registers_.peek(number);
  }
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override {
    return registers_.poke(number, value);
  }

 protected:
  [[nodiscard]] std::optional<size_t> writeSize(uint8_t command) const override;
  [[nodiscard]] bool writeCommand(uint8_t command, std::span<const uint8_t> data) override;
  [[nodiscard]] size_t readCommand(uint8_t command, std::span<const uint8_t> data,
                                   std::span<uint8_t, kMaxBlock + 1> answer) override;

 private:
  RegisterFile registers_;
};

[[nodiscard]] std::unique_ptr<Chip> makeRegisterChip(Settings& settings,
                                                     const ChipContext& context);

}  // namespace SmbusService::Board
