// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Wire.hpp"

#include <algorithm>

namespace SmbusService::Board {
namespace {

constexpr uint32_t kBitsOfByte = 9;       // 8 and the acknowledge
constexpr uint32_t kBitsOfCondition = 1;  // START, repeated START, STOP

uint8_t addressByte(uint8_t address, bool read) {
  return static_cast<uint8_t>((address << 1) | (read ? 1 : 0));
}

}  // namespace

void Wire::begin() {
  busy_ = true;
  pec_.reset();
  bits_ = 0;
  held_ = Time::zero();
  addressed_.clear();
}

void Wire::hear(Chip& chip) {
  const Time hold = chip.takeHold();
  held_ = hold > Time::max() - held_ ? Time::max() : held_ + hold;
}

bool Wire::start(uint8_t address, bool read) {
  if (!busy_) begin();
  bits_ += kBitsOfCondition + kBitsOfByte;
  pec_.add(addressByte(address, read));

  found_.clear();
  segment_.find(address, found_);
  answering_.clear();
  for (Seat* seat : found_) {
    if (std::ranges::find(addressed_, seat) == addressed_.end()) addressed_.push_back(seat);
    if (seat->chip->start(read)) answering_.push_back(seat);
    hear(*seat->chip);
  }
  return !answering_.empty();
}

bool Wire::write(uint8_t byte) {
  bits_ += kBitsOfByte;
  pec_.add(byte);
  std::erase_if(answering_, [&](Seat* seat) {
    const bool acknowledged = seat->chip->write(byte);
    hear(*seat->chip);
    return !acknowledged;
  });
  return !answering_.empty();
}

uint8_t Wire::read() {
  bits_ += kBitsOfByte;
  uint8_t byte = 0xFF;
  for (Seat* seat : answering_) {
    byte &= seat->chip->read();
    hear(*seat->chip);
  }
  pec_.add(byte);
  return byte;
}

void Wire::stop() {
  bits_ += kBitsOfCondition;
  for (Seat* seat : addressed_) seat->chip->stop();
  busy_ = false;
}

}  // namespace SmbusService::Board
