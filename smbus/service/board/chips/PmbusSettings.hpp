// SPDX-License-Identifier: Apache-2.0
//
// What the board file says of a PMBus supply:
//
//   "outputs"     [ { "volts": 12, "maxAmps": 100 } ], 1 to 32
//   "vin"         volts (230)
//   "efficiency"  power out by power in, 0.5 to 1 (0.92)
//   "voutMode"    VOUT_MODE (0x17: exponent -9)
//   "fanConfig"   FAN_CONFIG_1_2; fans that are there, by duty, if absent
//   "duty"        of the fans until they are commanded, % (30)
//   "hot"         degrees of either sensor at which the supply warns; it faults 10 above (70)
//   "id", "mfrModel", "revision", "location", "date", "serial"   the MFR texts; empty if absent
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

constexpr double kMostVin = 400;  // volts

struct PmbusOutput {
  double volts;
  double maxAmps;
};

struct PmbusSettings {
  // For a supply with so many fans, at most two.
  PmbusSettings(Settings& settings, size_t fans);

  std::vector<PmbusOutput> outputs;
  double vin;
  double efficiency;
  uint8_t voutMode;
  uint8_t fanConfig;
  double duty;  // 0 to 1
  double hot;
  std::array<std::string, 6> texts;  // MFR_ID to MFR_SERIAL
};

}  // namespace SmbusService::Board
