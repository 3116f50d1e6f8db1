// SPDX-License-Identifier: Apache-2.0
//
// The PMBus 1.2 commands (part II, appendix I) that the supply model knows: their names, sizes and
// formats.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace SmbusService::Board {

enum class PmbusCode : uint8_t {
  PAGE = 0x00,
  OPERATION = 0x01,
  CLEAR_FAULTS = 0x03,
  CAPABILITY = 0x19,
  VOUT_MODE = 0x20,
  FAN_CONFIG_1_2 = 0x3A,
  FAN_COMMAND_1 = 0x3B,
  FAN_COMMAND_2 = 0x3C,
  STATUS_BYTE = 0x78,
  STATUS_WORD = 0x79,
  STATUS_VOUT = 0x7A,
  STATUS_IOUT = 0x7B,
  STATUS_INPUT = 0x7C,
  STATUS_TEMPERATURE = 0x7D,
  STATUS_CML = 0x7E,
  STATUS_OTHER = 0x7F,
  STATUS_MFR_SPECIFIC = 0x80,
  STATUS_FANS_1_2 = 0x81,
  STATUS_FANS_3_4 = 0x82,
  READ_VIN = 0x88,
  READ_IIN = 0x89,
  READ_VOUT = 0x8B,
  READ_IOUT = 0x8C,
  READ_TEMPERATURE_1 = 0x8D,
  READ_TEMPERATURE_2 = 0x8E,
  READ_FAN_SPEED_1 = 0x90,
  READ_FAN_SPEED_2 = 0x91,
  READ_POUT = 0x96,
  READ_PIN = 0x97,
  PMBUS_REVISION = 0x98,
  MFR_ID = 0x99,
  MFR_MODEL = 0x9A,
  MFR_REVISION = 0x9B,
  MFR_LOCATION = 0x9C,
  MFR_DATE = 0x9D,
  MFR_SERIAL = 0x9E,
};

enum class PmbusFormat : uint8_t {
  kNone,      // no data
  kByte,      // bits
  kWord,      // bits, low byte first
  kLinear11,  // a word
  kLinear16,  // a word; the exponent is VOUT_MODE's
  kText,      // a block
};

struct PmbusCommand {
  PmbusCode code;
  std::string_view name;
  PmbusFormat format;
  bool writable;
  std::string_view unit;  // of a number
};

[[nodiscard]] std::span<const PmbusCommand> pmbusCommands();

// Null: the table has no such command.
[[nodiscard]] const PmbusCommand* findPmbusCommand(uint8_t code);

}  // namespace SmbusService::Board
