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
  pec_.reset();
  bits_ = 0;
  bytes_ = 0;
  held_ = Time::zero();
  cut_ = false;
  addressed_.clear();
}

void Wire::hear(Chip& chip) { hold(chip.takeHold()); }

void Wire::hold(Time duration) {
  held_ = duration > Time::max() - held_ ? Time::max() : held_ + duration;
}

// Whether the chip hears the START and is to acknowledge it.
bool Wire::present(Seat& seat) {
  if (!faults_.any()) {
    return true;
  }
  faults_.address(seat);
  if (faults_.strike(FaultKind::kSilent, &seat) != nullptr) {
    return false;
  }
  hold(faults_.delay(seat));
  return !faults_.refuses(seat, 0);
}

// False: the transfer is over, by a STOP that the master has not sent.
bool Wire::goesOn() {
  if (!cut_ && faults_.any() && std::ranges::any_of(addressed_, [this](const Seat* seat) {
        return faults_.cuts(*seat, bytes_);
      })) {
    stop();
    cut_ = true;
    answering_.clear();
  }
  return !cut_;
}

bool Wire::start(uint8_t address, bool read) {
  if (!goesOn()) {
    return false;
  }
  bits_ += kBitsOfCondition + kBitsOfByte;
  pec_.add(addressByte(address, read));

  found_.clear();
  segment_.find(address, found_);
  answering_.clear();
  for (Seat* seat : found_) {
    if (std::ranges::find(addressed_, seat) == addressed_.end()) {
      addressed_.push_back(seat);
    }
    if (!present(*seat)) {
      continue;
    }
    if (seat->chip->start(read)) {
      answering_.push_back(seat);
    }
    hear(*seat->chip);
  }
  return !answering_.empty();
}

bool Wire::acceptedBy(Seat& seat, uint8_t byte) {
  if (faults_.any() && faults_.refuses(seat, bytes_)) {
    return false;
  }
  const bool acknowledged = seat.chip->write(byte);
  hear(*seat.chip);
  return acknowledged;
}

bool Wire::write(uint8_t byte) {
  if (!goesOn()) {
    return false;
  }
  bits_ += kBitsOfByte;
  bytes_ += 1;
  pec_.add(byte);
  std::erase_if(answering_, [&](Seat* seat) { return !acceptedBy(*seat, byte); });
  return !answering_.empty();
}

uint8_t Wire::gather() {
  if (!goesOn()) {
    return 0xFF;
  }
  bits_ += kBitsOfByte;
  bytes_ += 1;
  uint8_t byte = 0xFF;
  for (Seat* seat : answering_) {
    const uint8_t said = seat->chip->read();
    byte &= faults_.any() ? faults_.corrupted(*seat, said) : said;
    hear(*seat->chip);
  }
  return byte;
}

uint8_t Wire::read() {
  const uint8_t byte = gather();
  pec_.add(byte);
  return byte;
}

bool Wire::pecIsSpoilt() {
  return faults_.any() && std::ranges::any_of(answering_, [this](const Seat* seat) {
           return faults_.strike(FaultKind::kWrongPec, seat) != nullptr;
         });
}

bool Wire::writePec() {
  const uint8_t pec = pec_.value();
  return write(pecIsSpoilt() ? static_cast<uint8_t>(~pec) : pec);
}

void Wire::readPec() {
  const uint8_t pec = gather();
  pec_.add(pecIsSpoilt() ? static_cast<uint8_t>(~pec) : pec);
}

void Wire::stop() {
  if (bits_ == 0 || cut_) {
    return;
  }
  bits_ += kBitsOfCondition;
  for (Seat* seat : addressed_) {
    seat->chip->stop();
  }
}

}  // namespace SmbusService::Board
