// SPDX-License-Identifier: Apache-2.0
#include "tools/PmbusBits.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace Nimbo {

namespace {

using SmbusService::Board::PmbusCode;

// From bit 15 on, or from bit 7 on.
struct StatusRegister {
  PmbusCode code;
  std::array<std::string_view, 16> names;
  size_t bits;
};

// clang-format off
constexpr StatusRegister kRegisters[] = {
    {PmbusCode::STATUS_WORD,
     {"VOUT", "IOUT_POUT", "INPUT", "MFR_SPECIFIC", "POWER_GOOD#", "FANS", "OTHER", "UNKNOWN",
      "BUSY", "OFF", "VOUT_OV_FAULT", "IOUT_OC_FAULT", "VIN_UV_FAULT", "TEMPERATURE", "CML",
      "NONE_OF_THE_ABOVE"}, 16},
    {PmbusCode::STATUS_VOUT,
     {"VOUT_OV_FAULT", "VOUT_OV_WARNING", "VOUT_UV_WARNING", "VOUT_UV_FAULT", "VOUT_MAX_WARNING",
      "TON_MAX_FAULT", "TOFF_MAX_WARNING", "VOUT_TRACKING_ERROR"}, 8},
    {PmbusCode::STATUS_IOUT,
     {"IOUT_OC_FAULT", "IOUT_OC_LV_FAULT", "IOUT_OC_WARNING", "IOUT_UC_FAULT",
      "CURRENT_SHARE_FAULT", "POWER_LIMITING", "POUT_OP_FAULT", "POUT_OP_WARNING"}, 8},
    {PmbusCode::STATUS_INPUT,
     {"VIN_OV_FAULT", "VIN_OV_WARNING", "VIN_UV_WARNING", "VIN_UV_FAULT", "OFF_FOR_LOW_VIN",
      "IIN_OC_FAULT", "IIN_OC_WARNING", "PIN_OP_WARNING"}, 8},
    {PmbusCode::STATUS_TEMPERATURE,
     {"OT_FAULT", "OT_WARNING", "UT_WARNING", "UT_FAULT", "", "", "", ""}, 8},
    {PmbusCode::STATUS_CML,
     {"INVALID_COMMAND", "INVALID_DATA", "PEC_FAILED", "MEMORY_FAULT", "PROCESSOR_FAULT", "",
      "OTHER_COMMUNICATION_FAULT", "OTHER_MEMORY_OR_LOGIC_FAULT"}, 8},
    {PmbusCode::STATUS_OTHER,
     {"", "", "INPUT_A_FUSE_FAULT", "INPUT_B_FUSE_FAULT", "INPUT_A_ORING_FAULT",
      "INPUT_B_ORING_FAULT", "OUTPUT_ORING_FAULT", ""}, 8},
    {PmbusCode::STATUS_MFR_SPECIFIC, {}, 8},
    {PmbusCode::STATUS_FANS_1_2,
     {"FAN_1_FAULT", "FAN_2_FAULT", "FAN_1_WARNING", "FAN_2_WARNING", "FAN_1_OVERRIDDEN",
      "FAN_2_OVERRIDDEN", "AIRFLOW_FAULT", "AIRFLOW_WARNING"}, 8},
    {PmbusCode::STATUS_FANS_3_4,
     {"FAN_3_FAULT", "FAN_4_FAULT", "FAN_3_WARNING", "FAN_4_WARNING", "FAN_3_OVERRIDDEN",
      "FAN_4_OVERRIDDEN", "", ""}, 8},
};
// clang-format on

const StatusRegister* find(PmbusCode code) {
  const auto* const row = std::ranges::find(kRegisters, code, &StatusRegister::code);
  return row == std::end(kRegisters) ? nullptr : row;
}

}  // namespace

bool isPmbusStatus(PmbusCode code) { return find(code) != nullptr; }

std::vector<std::string> pmbusBits(PmbusCode code, uint16_t value) {
  std::vector<std::string> set;
  const StatusRegister* const row = find(code);
  for (size_t i = 0; row != nullptr && i < row->bits; ++i) {
    const size_t bit = row->bits - 1 - i;
    if ((value >> bit & 1) != 0) {
      set.push_back(row->names[i].empty() ? "BIT_" + std::to_string(bit)
                                          : std::string(row->names[i]));
    }
  }
  return set;
}

}  // namespace Nimbo
