// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Pca9698.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kAutoIncrement = 0x80;
constexpr uint8_t kRegister = 0x3F;
constexpr uint8_t kBank = 0x07;   // within a kind of register
constexpr uint8_t kMask0 = 0x20;  // behind the ports
constexpr uint8_t kOutconf = 0x28;
constexpr uint8_t kAllbnk = 0x29;
constexpr uint8_t kMode = 0x2A;

constexpr bool exists(uint8_t number) {
  return number <= kMode && (number >= kOutconf || (number & kBank) < Pca9698::kBanks);
}

GpioExpander::Port portOf(uint8_t number) { return static_cast<GpioExpander::Port>(number >> 3); }

constexpr bool ofPins(uint8_t number) { return number < kMask0; }

}  // namespace

std::array<uint8_t, 0x2B> Pca9698::firstKept() {
  std::array<uint8_t, 0x2B> registers{};
  for (unsigned bank = 0; bank < kBanks; ++bank) {
    registers[kMask0 + bank] = 0xFF;
  }
  registers[kOutconf] = 0xFF;
  registers[kAllbnk] = 0x80;
  registers[kMode] = 0x02;
  return registers;
}

uint8_t Pca9698::get(uint8_t number) const {
  return ofPins(number) ? pins_.get(portOf(number), number & kBank) : kept_[number];
}

void Pca9698::put(uint8_t number, uint8_t value) {
  if (ofPins(number)) {
    pins_.set(portOf(number), number & kBank, value);
  } else {
    kept_[number] = value;
  }
}

bool Pca9698::select(uint8_t pointer) {
  if (!exists(pointer & kRegister)) {
    return false;
  }
  pointer_ = pointer & kRegister;
  autoIncrement_ = (pointer & kAutoIncrement) != 0;
  return true;
}

void Pca9698::advance() {
  if (!autoIncrement_ || pointer_ >= kOutconf) {
    return;
  }
  const unsigned bank = ((pointer_ & kBank) + 1u) % kBanks;
  pointer_ = static_cast<uint8_t>((pointer_ & ~unsigned{kBank}) | bank);
}

bool Pca9698::store(uint8_t byte) {
  put(pointer_, byte);
  advance();
  return true;
}

uint8_t Pca9698::fetch() {
  const uint8_t byte = get(pointer_);
  advance();
  return byte;
}

std::optional<Register> Pca9698::peek(uint32_t number) {
  if (number > kMode || !exists(static_cast<uint8_t>(number))) {
    return std::nullopt;
  }
  return Register{get(static_cast<uint8_t>(number)), 8};
}

// An input port shows the pins.
bool Pca9698::poke(uint32_t number, uint32_t value) {
  put(static_cast<uint8_t>(number), static_cast<uint8_t>(value));
  return number >= kMask0 || portOf(static_cast<uint8_t>(number)) != GpioExpander::Port::kInput;
}

std::unique_ptr<Chip> makePca9698(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca9698>();
}

}  // namespace SmbusService::Board
