// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusStatus.hpp"

namespace SmbusService::Board {
namespace {

using enum PmbusCode;

constexpr unsigned kPowerBad = 0x0800;
constexpr unsigned kOff = 0x0040;

// The bit of STATUS_WORD that is set while any of these bits is.
struct Summary {
  PmbusCode code;
  uint8_t bits;
  uint16_t word;
};

constexpr std::array kSummary = {
    Summary{STATUS_VOUT, 0xFF, 0x8000},
    Summary{STATUS_IOUT, 0xFF, 0x4000},
    Summary{STATUS_INPUT, 0xFF, 0x2000},
    Summary{STATUS_FANS_1_2, 0xFF, 0x0400},
    Summary{STATUS_IOUT, PmbusStatus::kOverCurrentFault, 0x0010},
    Summary{STATUS_INPUT, PmbusStatus::kUnderVoltageFault, 0x0008},
    Summary{STATUS_TEMPERATURE, 0xFF, 0x0004},
    Summary{STATUS_CML, 0xFF, 0x0002},
};

}  // namespace

uint16_t PmbusStatus::word(bool on, bool good) const {
  unsigned word = (on ? 0 : kOff) | (good ? 0 : kPowerBad);
  for (const Summary& summary : kSummary) {
    if ((get(summary.code) & summary.bits) != 0) {
      word |= summary.word;
    }
  }
  return static_cast<uint16_t>(word);
}

}  // namespace SmbusService::Board
