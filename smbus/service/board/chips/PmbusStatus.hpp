// SPDX-License-Identifier: Apache-2.0
//
// The status registers of a PMBus supply (PMBus 1.2 part II, section 17): each keeps what was
// raised in it until it is cleared, and STATUS_WORD sums them up.
#pragma once

#include <array>
#include <cstdint>

#include "smbus/service/board/chips/PmbusCommand.hpp"

namespace SmbusService::Board {

class PmbusStatus {
 public:
  // STATUS_VOUT
  static constexpr uint8_t kOverVoltageOutFault = 0x80;
  static constexpr uint8_t kUnderVoltageOutFault = 0x10;
  // STATUS_IOUT
  static constexpr uint8_t kOverCurrentFault = 0x80;
  static constexpr uint8_t kOverCurrentWarning = 0x20;
  // STATUS_INPUT
  static constexpr uint8_t kUnderVoltageFault = 0x10;
  static constexpr uint8_t kOffForLowInput = 0x08;
  // STATUS_TEMPERATURE
  static constexpr uint8_t kOverTemperatureFault = 0x80;
  static constexpr uint8_t kOverTemperatureWarning = 0x40;
  // STATUS_CML
  static constexpr uint8_t kUnknownCommand = 0x80;
  static constexpr uint8_t kInvalidData = 0x40;
  static constexpr uint8_t kWrongPec = 0x20;
  static constexpr uint8_t kOtherFault = 0x02;
  // STATUS_FANS_1_2
  static constexpr uint8_t kFan1Fault = 0x80;
  static constexpr uint8_t kFan2Fault = 0x40;

  // `code` is one of STATUS_VOUT to STATUS_FANS_3_4.
  void raise(PmbusCode code, uint8_t bits) { at(code) |= bits; }
  void clear(PmbusCode code, uint8_t bits) { at(code) &= static_cast<uint8_t>(~bits); }
  void clear() { registers_ = {}; }
  void set(PmbusCode code, uint8_t bits) { at(code) = bits; }
  [[nodiscard]] uint8_t get(PmbusCode code) const { return registers_[index(code)]; }

  // Whether it is one of those, and no other command.
  [[nodiscard]] static bool has(PmbusCode code) {
    return code >= PmbusCode::STATUS_VOUT && code <= PmbusCode::STATUS_FANS_3_4;
  }

  // STATUS_WORD of a supply whose outputs are on or off, and good or not; its low byte is
  // STATUS_BYTE.
  [[nodiscard]] uint16_t word(bool on, bool good) const;

 private:
  static constexpr size_t kFirst = static_cast<size_t>(PmbusCode::STATUS_VOUT);
  static constexpr size_t kLast = static_cast<size_t>(PmbusCode::STATUS_FANS_3_4);

  static size_t index(PmbusCode code) { return static_cast<size_t>(code) - kFirst; }
  uint8_t& at(PmbusCode code) { return registers_[index(code)]; }

  std::array<uint8_t, kLast - kFirst + 1> registers_{};
};

}  // namespace SmbusService::Board
