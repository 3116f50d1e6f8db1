// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/RegisterChip.hpp"

namespace SmbusService::Board {

void RegisterChip::begin() {
  index_ = 0;
  staged_ = 0;
}

bool RegisterChip::select(uint8_t pointer) {
  if (pointer >= registers_.size()) {
    return false;
  }
  pointer_ = pointer;
  return true;
}

void RegisterChip::advance() {
  if (++index_ < registers_.bytes()) {
    return;
  }
  index_ = 0;
  staged_ = 0;
  if (autoIncrement_) {
    pointer_ = static_cast<uint8_t>((pointer_ + 1u) % registers_.size());
  }
}

bool RegisterChip::store(uint8_t byte) {
  staged_ |= static_cast<unsigned>(byte) << registers_.shift(index_);
  const bool complete = index_ + 1 == registers_.bytes();
  if (complete && !registers_.readOnly(pointer_)) {
    registers_.set(pointer_, static_cast<uint16_t>(staged_));
  }
  advance();
  return true;
}

uint8_t RegisterChip::fetch() {
  if (index_ == 0) {
    shown_ = registers_.get(pointer_);
  }
  const auto byte = static_cast<uint8_t>(shown_ >> registers_.shift(index_));
  advance();
  return byte;
}

std::optional<size_t> PecRegisterChip::writeSize(uint8_t command) const {
  if (command >= registers_.size()) {
    return std::nullopt;
  }
  return registers_.bytes();
}

bool PecRegisterChip::writeCommand(uint8_t command, std::span<const uint8_t> data) {
  unsigned value = 0;
  for (unsigned i = 0; i < data.size(); ++i) {
    value |= static_cast<unsigned>(data[i]) << registers_.shift(i);
  }
  if (!registers_.readOnly(command)) {
    registers_.set(command, static_cast<uint16_t>(value));
  }
  return true;
}

size_t PecRegisterChip::readCommand(uint8_t command, std::span<const uint8_t> /*data*/,
                                    std::span<uint8_t, kMaxBlock + 1> answer) {
  const unsigned value = registers_.get(command);
  for (unsigned i = 0; i < registers_.bytes(); ++i) {
    answer[i] = static_cast<uint8_t>(value >> registers_.shift(i));
  }
  return registers_.bytes();
}

std::unique_ptr<Chip> makeRegisterChip(Settings& settings, const ChipContext& context) {
  RegisterFile registers(settings);
  const bool pec = settings.flag("pec", false);
  const bool autoIncrement = settings.flag("autoIncrement", !pec);
  if (!pec) {
    return std::make_unique<RegisterChip>(std::move(registers), autoIncrement);
  }
  if (autoIncrement) {
    settings.fail("autoIncrement", "a chip with \"pec\" ends a transfer after one register");
  }
  return std::make_unique<PecRegisterChip>(context.address, std::move(registers));
}

}  // namespace SmbusService::Board
