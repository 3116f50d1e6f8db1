// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Pca954x.hpp"

namespace SmbusService::Board {

// Any change of the pin since the last look means that it is low now or has been low.
void Pca954x::watchReset() {
  const uint32_t changes = reset_.changes();
  if (changes == resetChanges_ && reset_.level()) {
    return;
  }
  resetChanges_ = changes;
  close();
}

uint8_t Pca954x::open() {
  watchReset();
  return open_;
}

bool Pca954x::start(bool /*read*/) {
  watchReset();
  return reset_.level();
}

bool Pca954x::write(uint8_t byte) {
  const unsigned implemented = (1u << channels()) - 1;
  control_ = static_cast<uint8_t>(byte & implemented);
  return true;
}

bool Pca954x::connect(std::string_view pin, Net& net, bool inverted) {
  if (pin != "reset" || reset_.connected()) {
    return false;
  }
  reset_.connect(net, inverted);
  resetChanges_ = reset_.changes();
  return true;
}

std::optional<Register> Pca954x::peek(uint32_t number) {
  if (number != 0) {
    return std::nullopt;
  }
  watchReset();
  return Register{control_, channels()};
}

bool Pca954x::poke(uint32_t /*number*/, uint32_t value) {
  control_ = open_ = static_cast<uint8_t>(value);
  return true;
}

std::unique_ptr<Chip> makePca9546(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca954x>(4);
}

std::unique_ptr<Chip> makePca9548(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca954x>(8);
}

}  // namespace SmbusService::Board
