// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Eeprom.hpp"

#include "smbus/service/board/chips/EepromImage.hpp"

namespace SmbusService::Board {

bool Eeprom::start(bool read) {
  if (clock_.now() < busyUntil_) {
    return false;
  }
  addressLeft_ = read ? 0 : settings_.addressBytes;
  toWrite_.clear();  // a write that a repeated START cuts short does not take place
  return true;
}

size_t Eeprom::nextInPage() const {
  const size_t page = address_ - address_ % settings_.pageSize;
  return page + (address_ + 1 - page) % settings_.pageSize;
}

bool Eeprom::write(uint8_t byte) {
  if (addressLeft_ > 0) {
    const size_t before = addressLeft_ == settings_.addressBytes ? 0 : address_;
    --addressLeft_;
    address_ = (before << 8 | byte) % bytes_.size();
    return true;
  }
  toWrite_[address_] = byte;
  address_ = nextInPage();
  return true;
}

uint8_t Eeprom::read() {
  const uint8_t byte = bytes_[address_];
  address_ = (address_ + 1) % bytes_.size();
  return byte;
}

void Eeprom::stop() {
  if (toWrite_.empty()) {
    return;
  }
  if (!writeProtect_.level()) {
    for (const auto& [address, byte] : toWrite_) {
      bytes_[address] = byte;
    }
    busyUntil_ = clock_.now() + settings_.writeCycle;
  }
  toWrite_.clear();
}

bool Eeprom::connect(std::string_view pin, Net& net, bool inverted) {
  if (pin != "wp" || writeProtect_.connected()) {
    return false;
  }
  writeProtect_.connect(net, inverted);
  return true;
}

std::optional<Register> Eeprom::peek(uint32_t number) {
  if (number >= bytes_.size()) {
    return std::nullopt;
  }
  return Register{bytes_[number], 8};
}

bool Eeprom::poke(uint32_t number, uint32_t value) {
  bytes_[number] = static_cast<uint8_t>(value);
  return true;
}

std::unique_ptr<Chip> makeEeprom(Settings& settings, const ChipContext& context) {
  constexpr uint32_t kShort = 256;
  constexpr uint32_t kLong = 65536;
  const uint32_t addressBytes = settings.number("addressBytes", 1, 2, 1);
  const uint32_t size = settings.number("size", 1, addressBytes == 1 ? kShort : kLong, kShort);
  const uint32_t page = settings.number("pageSize", 1, size, std::min(size, 16u));
  if (size % page != 0) {
    settings.fail("pageSize", "the size is a whole number of pages");
  }
  const Time writeCycle = std::chrono::milliseconds(settings.number("writeMs", 0, 1000, 5));
  return std::make_unique<Eeprom>(eepromImage(settings, size),
                                  EepromSettings{addressBytes, page, writeCycle}, context.clock);
}

}  // namespace SmbusService::Board
