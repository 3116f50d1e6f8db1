// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/RegisterFile.hpp"

#include <fmt/format.h>

namespace SmbusService::Board {
namespace {

constexpr uint32_t kMaxRegisters = 256;

unsigned bytesOfWidth(Settings& settings) {
  const uint32_t width = settings.number("width", 8, 16, 8);
  if (width % 8 != 0) {
    settings.fail("width", "a register is 8 or 16 bits wide");
  }
  return width / 8;
}

}  // namespace

RegisterFile::RegisterFile(Settings& settings)
    : bytes_(bytesOfWidth(settings)),
      bigEndian_(settings.choice("byteOrder", {"big", "little"}) == 0) {
  const uint32_t size = settings.number("size", 1, kMaxRegisters, kMaxRegisters);
  const uint32_t most = bytes_ == 1 ? UINT8_MAX : UINT16_MAX;
  values_.assign(size, static_cast<uint16_t>(settings.number("fill", 0, most, 0)));
  readOnly_.assign(size, false);

  settings.forEachMember("registers", [&](const std::string& name, const Item& contents) {
    const std::optional<uint32_t> first = parseNumber(name);
    if (!first || *first >= size) {
      contents.fail(fmt::format("\"{}\" is no register from 0 to {}", name, size - 1));
    }
    fill(contents, *first);
  });
  settings.forEach("readOnly", [&](const Item& item) {
    const Range range = item.range(size - 1);
    for (uint32_t i = range.first; i <= range.last; ++i) {
      readOnly_[i] = true;
    }
  });
}

void RegisterFile::fill(const Item& contents, uint32_t first) {
  const std::vector<uint32_t> values = contents.numbers(bytes_ == 1 ? UINT8_MAX : UINT16_MAX);
  if (values.size() > size() - first) {
    contents.fail(fmt::format("{} values from register {} on; the chip has {} registers",
                              values.size(), first, size()));
  }
  for (const uint32_t value : values) {
    values_[first++] = static_cast<uint16_t>(value);
  }
}

uint16_t RegisterFile::get(uint8_t number) const {
  unsigned value = values_[number];
  for (const BitPin& input : inputs_) {
    if (input.number != number) {
      continue;
    }
    value &= ~(1u << input.bit);
    value |= (input.pin.level() ? 1u : 0u) << input.bit;
  }
  return static_cast<uint16_t>(value);
}

void RegisterFile::set(uint8_t number, uint16_t value) {
  values_[number] = value;
  for (BitPin& output : outputs_) {
    if (output.number == number) {
      output.pin.drive((value >> output.bit & 1) != 0);
    }
  }
}

std::optional<Register> RegisterFile::peek(uint32_t number) const {
  if (number >= size()) {
    return std::nullopt;
  }
  return Register{get(static_cast<uint8_t>(number)), 8 * bytes_};
}

bool RegisterFile::poke(uint32_t number, uint32_t value) {
  if (number >= size()) {
    return false;
  }
  set(static_cast<uint8_t>(number), static_cast<uint16_t>(value));
  return true;
}

bool RegisterFile::connect(std::string_view pin, Net& net, bool inverted) {
  const bool isInput = pin.starts_with("in");
  if (!isInput && !pin.starts_with("out")) {
    return false;
  }
  pin.remove_prefix(isInput ? 2 : 3);
  const size_t dot = pin.find('.');
  if (dot == std::string_view::npos) {
    return false;
  }
  const auto number = parseNumber(pin.substr(0, dot));
  const auto bit = parseNumber(pin.substr(dot + 1));
  if (!number || *number >= size() || !bit || *bit >= 8 * bytes_) {
    return false;
  }

  auto& pins = isInput ? inputs_ : outputs_;
  BitPin& added = pins.emplace_back(BitPin{static_cast<uint8_t>(*number), *bit, Pin()});
  added.pin.connect(net, inverted);
  if (!isInput) {
    set(added.number, values_[added.number]);
  }
  return true;
}

}  // namespace SmbusService::Board
