// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusStatus.hpp"

namespace SmbusService::Board {
namespace {

using enum PmbusCode;

constexpr unsigned kPowerBad = 0x0800;
constexpr unsigned kOff = 0x0040;
constexpr uint16_t kNoneOfTheAbove = 0x0001;  // something without a bit of its own in the low byte

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
    Summary{STATUS_MFR_SPECIFIC, 0xFF, 0x1000 | kNoneOfTheAbove},
    Summary{STATUS_FANS_1_2, 0xFF, 0x0400 | kNoneOfTheAbove},
    Summary{STATUS_FANS_3_4, 0xFF, 0x0400 | kNoneOfTheAbove},
    Summary{STATUS_OTHER, 0xFF, 0x0200 | kNoneOfTheAbove},
    Summary{STATUS_VOUT, PmbusStatus::kOverVoltageOutFault, 0x0020},
    Summary{STATUS_IOUT, PmbusStatus::kOverCurrentFault, 0x0010},
    Summary{STATUS_INPUT, PmbusStatus::kUnderVoltageFault, 0x0008},
    Summary{STATUS_TEMPERATURE, 0xFF, 0x0004},
    Summary{STATUS_CML, 0xFF, 0x0002},
    Summary{STATUS_VOUT, uint8_t(~PmbusStatus::kOverVoltageOutFault), kNoneOfTheAbove},
    Summary{STATUS_IOUT, uint8_t(~PmbusStatus::kOverCurrentFault), kNoneOfTheAbove},
    Summary{STATUS_INPUT,
            uint8_t(~(PmbusStatus::kUnderVoltageFault | PmbusStatus::kOffForLowInput)),
            kNoneOfTheAbove},
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
