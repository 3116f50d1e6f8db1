// SPDX-License-Identifier: Apache-2.0
//
// The bits of the PMBus status registers by name (PMBus 1.2 part II section 17).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "smbus/service/board/chips/PmbusCommand.hpp"

namespace Nimbo {

// Whether the command reads a status register whose bits have names.
bool isPmbusStatus(SmbusService::Board::PmbusCode code);

// The names of the bits that are set, the most significant first; a bit that the standard keeps for
// itself is "BIT_n".
std::vector<std::string> pmbusBits(SmbusService::Board::PmbusCode code, uint16_t value);

}  // namespace Nimbo
