// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/GpioExpander.hpp"

#include <bit>

namespace SmbusService::Board {
namespace {

// Calls `visit` with the number of each bit that is set.
template <typename Visit>
void forEachBit(unsigned bits, Visit visit) {
  for (; bits != 0; bits &= bits - 1) {
    visit(static_cast<unsigned>(std::countr_zero(bits)));
  }
}

constexpr bool isDigit(char c, unsigned below) {
  return c >= '0' && static_cast<unsigned>(c - '0') < below;
}

}  // namespace

GpioExpander::GpioExpander(unsigned banks, uint8_t firstOutput) : banks_(banks) {
  for (Bank& bank : bank_) {
    bank.output = firstOutput;
  }
}

uint8_t GpioExpander::levels(const Bank& bank) {
  unsigned levels = (bank.output & ~bank.configuration) | bank.configuration;
  forEachBit(bank.connected & bank.configuration, [&](unsigned bit) {
    if (!bank.pins[bit].level()) {
      levels &= ~(1u << bit);
    }
  });
  return static_cast<uint8_t>(levels);
}

void GpioExpander::drive(Bank& bank) {
  forEachBit(bank.connected & ~bank.configuration,
             [&](unsigned bit) { bank.pins[bit].drive((bank.output >> bit & 1) != 0); });
}

uint8_t GpioExpander::get(Port port, unsigned number) const {
  const Bank& bank = bank_[number];
  switch (port) {
    case Port::kInput:
      return levels(bank) ^ bank.polarity;
    case Port::kOutput:
      return bank.output;
    case Port::kPolarity:
      return bank.polarity;
    case Port::kConfiguration:
      return bank.configuration;
  }
  return 0xFF;
}

void GpioExpander::set(Port port, unsigned number, uint8_t value) {
  Bank& bank = bank_[number];
  const uint8_t driven = bank.connected & static_cast<uint8_t>(~bank.configuration);
  if (port == Port::kOutput) {
    bank.output = value;
  }
  if (port == Port::kPolarity) {
    bank.polarity = value;
  }
  if (port == Port::kConfiguration) {
    bank.configuration = value;
  }
  forEachBit(driven & bank.configuration, [&](unsigned bit) { bank.pins[bit].release(); });
  drive(bank);
}

bool GpioExpander::connect(std::string_view pin, Net& net, bool inverted) {
  const bool wellFormed = pin.size() == 5 && pin.starts_with("IO") && isDigit(pin[2], banks_) &&
                          pin[3] == '_' && isDigit(pin[4], 8);
  if (!wellFormed) {
    return false;
  }
  Bank& bank = bank_[static_cast<size_t>(pin[2] - '0')];
  const auto bit = static_cast<size_t>(pin[4] - '0');
  if (bank.pins[bit].connected()) {
    return false;
  }
  bank.pins[bit].connect(net, inverted);
  bank.connected = static_cast<uint8_t>(bank.connected | (1u << bit));
  return true;
}

}  // namespace SmbusService::Board
