// SPDX-License-Identifier: Apache-2.0
//
// What a board tells of its parts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace SmbusService::Board {

struct ChipInfo {
  std::string label;
  std::string model;
  uint8_t address = 0;  // 7 bits
  std::string bus;
  std::string path;  // channels from the bus to the chip: "Mux1.3 Mux2.0"; empty: on the bus itself
};

struct NetInfo {
  std::string name;
  bool level = false;
  std::vector<std::string> pins;  // as the board file names them
};

}  // namespace SmbusService::Board
