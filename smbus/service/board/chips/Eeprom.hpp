// SPDX-License-Identifier: Apache-2.0
//
// A serial EEPROM of the 24Cxx kind with byte addresses of one or two bytes, most significant
// first. A read goes on through the whole array and from its end to its beginning. A write fills at
// most one page, going on at the page's beginning; it takes place at the STOP, and the chip does
// not acknowledge its address until the write cycle is over. With its WP pin high it acknowledges
// data and keeps what it has.
//
// Settings: those of EepromImage, and
//   "addressBytes"  1 or 2 (1)
//   "size"          bytes: up to 256, or 65536 with two address bytes (256)
//   "pageSize"      bytes (16)
//   "writeMs"       the write cycle in milliseconds (5)
// Pins: "wp" in, pulled low.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Net.hpp"

namespace SmbusService::Board {

struct EepromSettings {
  unsigned addressBytes;
  size_t pageSize;
  Time writeCycle;
};

class Eeprom : public Chip {
 public:
  Eeprom(std::vector<uint8_t> bytes, const EepromSettings& settings, BoardClock& clock)
      : bytes_(std::move(bytes)), settings_(settings), clock_(clock) {}

  [[nodiscard]] bool start(bool read) override;
  [[nodiscard]] bool write(uint8_t byte) override;
  [[nodiscard]] uint8_t read() override;
  void stop() override;
  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override;
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override;

 private:
  [[nodiscard]] size_t nextInPage() const;

  std::vector<uint8_t> bytes_;
  EepromSettings settings_;
  BoardClock& clock_;
  Pin writeProtect_{false};

  size_t address_ = 0;
  unsigned addressLeft_ = 0;           // bytes of the address still to come
  std::map<size_t, uint8_t> toWrite_;  // at the STOP
  Time busyUntil_{0};
};

[[nodiscard]] std::unique_ptr<Chip> makeEeprom(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
