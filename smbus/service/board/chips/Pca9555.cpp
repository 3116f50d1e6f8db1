// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Pca9555.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kRegisters = 0x07;  // mask of the command byte

GpioExpander::Port portOf(uint8_t pointer) { return static_cast<GpioExpander::Port>(pointer >> 1); }

}  // namespace

bool Pca9555::select(uint8_t pointer) {
  pointer_ = pointer & kRegisters;
  return true;
}

bool Pca9555::store(uint8_t byte) {
  pins_.set(portOf(pointer_), pointer_ & 1, byte);
  pointer_ ^= 1;
  return true;
}

uint8_t Pca9555::fetch() {
  const uint8_t byte = pins_.get(portOf(pointer_), pointer_ & 1);
  pointer_ ^= 1;
  return byte;
}

std::optional<Register> Pca9555::peek(uint32_t number) {
  if (number > kRegisters) {
    return std::nullopt;
  }
  return Register{pins_.get(portOf(static_cast<uint8_t>(number)), number & 1), 8};
}

// An input port shows the pins.
bool Pca9555::poke(uint32_t number, uint32_t value) {
  const GpioExpander::Port port = portOf(static_cast<uint8_t>(number));
  pins_.set(port, number & 1, static_cast<uint8_t>(value));
  return port != GpioExpander::Port::kInput;
}

std::unique_ptr<Chip> makePca9555(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca9555>();
}

}  // namespace SmbusService::Board
