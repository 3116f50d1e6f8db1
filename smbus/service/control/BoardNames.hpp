// SPDX-License-Identifier: Apache-2.0
//
// Names that requests give, looked up on a board. Each throws Board::BoardError for a name that is
// not there, with what there is instead.
#pragma once

#include <string>

#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService {

void requireChip(const Board::VirtualBoard& board, const std::string& label);

void requireBus(const Board::VirtualBoard& board, const std::string& name);

void requireWire(const Board::VirtualBoard& board, const std::string& name);

void requireEvent(const Board::VirtualBoard& board, const std::string& name);

// The board's own name of a wire or of a chip's quantity; the latter may be written
// "chip.quantity" or "chip:quantity".
[[nodiscard]] std::string leverNamed(const Board::VirtualBoard& board, const std::string& name);

}  // namespace SmbusService
