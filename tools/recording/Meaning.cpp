// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/Meaning.hpp"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "smbus/service/board/chips/PmbusCommand.hpp"
#include "smbus/service/board/chips/PmbusLinear.hpp"

namespace Nimbo {

namespace {

namespace Chips = SmbusService::Board;
using Chips::PmbusCode;
using Chips::PmbusFormat;

constexpr uint8_t kVoutModeKind = 0xE0;  // PMBus 1.2 part II section 8.3: 0 for linear

uint8_t byteAt(std::string_view data, size_t index) { return static_cast<uint8_t>(data[index]); }

std::optional<double> numberOf(PmbusFormat format, std::string_view data, const PmbusState& state) {
  if (data.size() != 2) {
    return std::nullopt;
  }
  const auto word = static_cast<uint16_t>(byteAt(data, 0) | byteAt(data, 1) << 8);
  if (format == PmbusFormat::kLinear11) {
    return Chips::fromLinear11(word);
  }
  const auto mode = state.voutMode();
  if (format == PmbusFormat::kLinear16 && mode && (*mode & kVoutModeKind) == 0) {
    return Chips::fromLinear16(word, *mode);
  }
  return std::nullopt;
}

// A device may say anything, a terminal should not be told it.
std::string printable(std::string_view bytes) {
  std::string text(bytes);
  std::ranges::replace_if(
      text, [](char byte) { return byte < ' ' || byte > '~'; }, '.');
  return text;
}

// Where the banks of one kind of register begin.
struct KindRow {
  uint8_t first;
  const char* name;
};

// The registers of an expander.
struct Expander {
  uint8_t banks;
  uint8_t commandMask;    // the bits that choose a register
  uint8_t autoIncrement;  // the bit without which a transfer stays with its bank; 0: it never does
  std::array<KindRow, 5> kinds;
};

constexpr Expander kPca9555{
    2,
    0x07,
    0,
    {{{0, "input"}, {2, "output"}, {4, "polarity inversion"}, {6, "configuration"}, {0xFF, ""}}}};
constexpr Expander kPca9698{5,
                            0x3F,
                            0x80,
                            {{{0x00, "input"},
                              {0x08, "output"},
                              {0x10, "polarity inversion"},
                              {0x18, "configuration"},
                              {0x20, "interrupt mask"}}}};

std::vector<std::string> pinsSet(unsigned bank, uint8_t bits) {
  std::vector<std::string> pins;
  for (unsigned bit = 0; bit < 8; ++bit) {
    if ((bits >> bit & 1) != 0) {
      pins.push_back(fmt::format("IO{}_{}", bank, bit));
    }
  }
  return pins;
}

}  // namespace

void PmbusState::learn(uint8_t command, std::string_view data, bool written) {
  if (data.size() != 1) {
    return;
  }
  if (PmbusCode{command} == PmbusCode::PAGE) {
    page_ = byteAt(data, 0);
  } else if (PmbusCode{command} == PmbusCode::VOUT_MODE && !written) {
    modes_[page_] = byteAt(data, 0);
  }
}

std::optional<uint8_t> PmbusState::voutMode() const {
  const auto mode = modes_.find(page_);
  return mode == modes_.end() ? std::nullopt : std::optional(mode->second);
}

Meaning pmbusMeaning(uint8_t command, std::string_view data, const PmbusState& state) {
  const Chips::PmbusCommand* known = Chips::findPmbusCommand(command);
  if (known == nullptr) {
    return {};
  }
  Meaning meaning;
  meaning.name = known->name;
  meaning.value = numberOf(known->format, data, state);
  meaning.unit = meaning.value ? known->unit : "";
  if (known->format == PmbusFormat::kText && !data.empty()) {
    meaning.text = printable(data);
  }
  return meaning;
}

Meaning expanderMeaning(Registers chip, uint8_t command, std::string_view data) {
  const Expander& expander = chip == Registers::kPca9698 ? kPca9698 : kPca9555;
  const auto number = static_cast<uint8_t>(command & expander.commandMask);
  const auto* const kind = std::ranges::find_if(expander.kinds, [&](const KindRow& row) {
    return number >= row.first && number < row.first + expander.banks;
  });
  if (kind == expander.kinds.end()) {
    return {};
  }
  const bool moves = expander.autoIncrement == 0 || (command & expander.autoIncrement) != 0;
  auto bank = static_cast<unsigned>(number - kind->first);
  Meaning meaning;
  meaning.name = fmt::format("{} {}", kind->name, bank);
  for (size_t i = 0; i < data.size(); ++i) {
    meaning.banks.push_back(
        {fmt::format("{} {}", kind->name, bank), pinsSet(bank, byteAt(data, i))});
    bank = moves ? (bank + 1) % expander.banks : bank;
  }
  return meaning;
}

}  // namespace Nimbo
