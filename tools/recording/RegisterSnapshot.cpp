// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/RegisterSnapshot.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace Nimbo {

namespace {

enum class Unit : uint8_t {
  kByte,
  kWord,      // of a register of 16 bits
  kBytePair,  // of two registers of 8 bits that belong together: read at once, so that they fit
};

struct Range {
  uint8_t first;
  uint8_t last;
  Unit unit;
};

constexpr std::array kAllBytes{Range{0x00, 0xFF, Unit::kByte}};
constexpr std::array kAllWords{Range{0x00, 0xFF, Unit::kWord}};
constexpr std::array kPca9555{Range{0x00, 0x07, Unit::kByte}};
// The same registers once more with the bit that makes a transfer move on.
constexpr std::array kPca9698{Range{0x00, 0x2A, Unit::kByte}, Range{0x80, 0xAA, Unit::kByte}};
constexpr std::array kPsoc{Range{0x00, 0x3B, Unit::kByte}, Range{0x3C, 0x3D, Unit::kBytePair},
                           Range{0x3E, 0x3F, Unit::kByte}, Range{0x40, 0x47, Unit::kBytePair},
                           Range{0x48, 0xFF, Unit::kByte}};
// SFF-8636 lower page: the latched flags, which reading clears, lie in bytes 3 to 21.
constexpr std::array kModule{Range{0x00, 0x02, Unit::kByte}, Range{0x16, 0xFF, Unit::kByte}};
constexpr std::array<uint8_t, 5> kModuleIdentifiers{0x0C, 0x0D, 0x11, 0x18, 0x1E};  // SFF-8024

constexpr const char* kPmbus =
    "PMBus commands are of several widths, which no register chip has; describe it by hand, with "
    "the model \"pmbus\"";

struct Plan {
  std::string_view driver;
  std::span<const Range> ranges;
  const char* leftOut = "";
};

constexpr std::array kPlans{
    Plan{"EmersonPmbus", {}, kPmbus}, Plan{"GenericPCA9555", kPca9555},
    Plan{"HalvPsuPCA9555", kPca9555}, Plan{"HalvQCPLD", kAllWords},
    Plan{"HalvSPCA9555", kPca9555},   Plan{"HalvYCPLD", kAllWords},
    Plan{"HalvYQSFP", kPca9698},      Plan{"HalvorsaPCA9555", kPca9555},
    Plan{"HalvorsaPsoc", kPsoc},      Plan{"HalvorsaSFP", kPca9698},
    Plan{"Pmbus", {}, kPmbus},
};

// A device that is silent for so long at the beginning is not there.
constexpr unsigned kPatience = 16;  // registers

Plan planOf(const std::string& driver, RegisterSource& source) {
  const auto* const row = std::ranges::find(kPlans, driver, &Plan::driver);
  if (row != kPlans.end()) {
    return *row;
  }
  const auto identifier = driver == "SmbusProxyDriver" ? source.byte(0) : std::nullopt;
  const bool module =
      identifier && std::ranges::find(kModuleIdentifiers, *identifier) != kModuleIdentifiers.end();
  return {driver, module ? std::span<const Range>(kModule) : kAllBytes};
}

void keep(RegisterSnapshot& snapshot, unsigned number, std::optional<unsigned> value) {
  if (value) {
    snapshot.values[number] = static_cast<uint16_t>(*value);
  }
}

void readOne(Unit unit, uint8_t number, RegisterSource& source, RegisterSnapshot& snapshot) {
  if (unit == Unit::kByte) {
    keep(snapshot, number, source.byte(number));
  } else if (unit == Unit::kWord) {
    keep(snapshot, number, source.word(number));
  } else if (const auto pair = source.word(number)) {
    keep(snapshot, number, *pair & 0xFFU);
    keep(snapshot, number + 1U, static_cast<unsigned>(*pair) >> 8);
  }
}

}  // namespace

RegisterSnapshot takeSnapshot(const std::string& driver, RegisterSource& source) {
  const Plan plan = planOf(driver, source);
  RegisterSnapshot snapshot;
  snapshot.leftOut = plan.leftOut;
  for (const Range& range : plan.ranges) {
    snapshot.width = range.unit == Unit::kWord ? 16 : 8;
    for (unsigned number = range.first; number <= range.last;
         number += range.unit == Unit::kBytePair ? 2 : 1) {
      if (number >= kPatience && snapshot.values.empty()) {
        return snapshot;
      }
      readOne(range.unit, static_cast<uint8_t>(number), source, snapshot);
    }
  }
  return snapshot;
}

}  // namespace Nimbo
