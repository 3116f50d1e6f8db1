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

}  // namespace

std::array<uint8_t, 0x2B> Pca9698::firstKept() {
  std::array<uint8_t, 0x2B> registers{};
  for (unsigned bank = 0; bank < kBanks; ++bank) registers[kMask0 + bank] = 0xFF;
  registers[kOutconf] = 0xFF;
  registers[kAllbnk] = 0x80;
  registers[kMode] = 0x02;
  return registers;
}

bool Pca9698::ofPins() const { return pointer_ < kMask0; }

bool Pca9698::select(uint8_t pointer) {
  if (!exists(pointer & kRegister)) return false;
  pointer_ = pointer & kRegister;
  autoIncrement_ = (pointer & kAutoIncrement) != 0;
  return true;
}

void Pca9698::advance() {
  if (!autoIncrement_ || pointer_ >= kOutconf) return;
  const unsigned bank = ((pointer_ & kBank) + 1u) % kBanks;
  pointer_ = static_cast<uint8_t>((pointer_ & ~unsigned{kBank}) | bank);
}

bool Pca9698::store(uint8_t byte) {
  if (ofPins()) {
    pins_.set(portOf(pointer_), pointer_ & kBank, byte);
  } else {
    kept_[pointer_] = byte;
  }
  advance();
  return true;
}

uint8_t Pca9698::fetch() {
  const uint8_t byte = ofPins() ? pins_.get(portOf(pointer_), pointer_ & kBank) : kept_[pointer_];
  advance();
  return byte;
}

std::unique_ptr<Chip> makePca9698(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca9698>();
}

}  // namespace SmbusService::Board
