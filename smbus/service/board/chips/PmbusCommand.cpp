// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusCommand.hpp"

#include <algorithm>
#include <array>

namespace SmbusService::Board {
namespace {

using enum PmbusFormat;

// clang-format off
#define COMMAND(code) PmbusCode::code, #code
constexpr std::array kCommands = {
    PmbusCommand{COMMAND(PAGE), kByte, true, ""},
    PmbusCommand{COMMAND(OPERATION), kByte, true, ""},
    PmbusCommand{COMMAND(CLEAR_FAULTS), kNone, true, ""},
    PmbusCommand{COMMAND(CAPABILITY), kByte, false, ""},
    PmbusCommand{COMMAND(VOUT_MODE), kByte, false, ""},
    PmbusCommand{COMMAND(FAN_CONFIG_1_2), kByte, true, ""},
    PmbusCommand{COMMAND(FAN_COMMAND_1), kLinear11, true, ""},
    PmbusCommand{COMMAND(FAN_COMMAND_2), kLinear11, true, ""},
    PmbusCommand{COMMAND(STATUS_BYTE), kByte, false, ""},
    PmbusCommand{COMMAND(STATUS_WORD), kWord, false, ""},
    PmbusCommand{COMMAND(STATUS_VOUT), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_IOUT), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_INPUT), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_TEMPERATURE), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_CML), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_OTHER), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_MFR_SPECIFIC), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_FANS_1_2), kByte, true, ""},
    PmbusCommand{COMMAND(STATUS_FANS_3_4), kByte, true, ""},
    PmbusCommand{COMMAND(READ_VIN), kLinear11, false, "V"},
    PmbusCommand{COMMAND(READ_IIN), kLinear11, false, "A"},
    PmbusCommand{COMMAND(READ_VOUT), kLinear16, false, "V"},
    PmbusCommand{COMMAND(READ_IOUT), kLinear11, false, "A"},
    PmbusCommand{COMMAND(READ_TEMPERATURE_1), kLinear11, false, "C"},
    PmbusCommand{COMMAND(READ_TEMPERATURE_2), kLinear11, false, "C"},
    PmbusCommand{COMMAND(READ_FAN_SPEED_1), kLinear11, false, "RPM"},
    PmbusCommand{COMMAND(READ_FAN_SPEED_2), kLinear11, false, "RPM"},
    PmbusCommand{COMMAND(READ_POUT), kLinear11, false, "W"},
    PmbusCommand{COMMAND(READ_PIN), kLinear11, false, "W"},
    PmbusCommand{COMMAND(PMBUS_REVISION), kByte, false, ""},
    PmbusCommand{COMMAND(MFR_ID), kText, false, ""},
    PmbusCommand{COMMAND(MFR_MODEL), kText, false, ""},
    PmbusCommand{COMMAND(MFR_REVISION), kText, false, ""},
    PmbusCommand{COMMAND(MFR_LOCATION), kText, false, ""},
    PmbusCommand{COMMAND(MFR_DATE), kText, false, ""},
    PmbusCommand{COMMAND(MFR_SERIAL), kText, false, ""},
};
#undef COMMAND
// clang-format on
static_assert(std::ranges::is_sorted(kCommands, {}, &PmbusCommand::code));

}  // namespace

std::span<const PmbusCommand> pmbusCommands() { return kCommands; }

const PmbusCommand* findPmbusCommand(uint8_t code) {
  const auto* const found =
      std::ranges::lower_bound(kCommands, PmbusCode{code}, {}, &PmbusCommand::code);
  return found != kCommands.end() && found->code == PmbusCode{code} ? found : nullptr;
}

}  // namespace SmbusService::Board
