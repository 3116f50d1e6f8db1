// SPDX-License-Identifier: Apache-2.0
//
// What the control socket tells of a board, key by key into an answer.
#pragma once

#include "config/JsonLine.hpp"
#include "smbus/service/board/Scenario.hpp"

namespace SmbusService {

// "board", "seconds", "buses", "chips", "wires", "events", "faults".
void reportBoard(Board::VirtualBoard& board, Config::JsonLine& answer);

// "scenario".
void reportScenario(const Board::ScenarioPlayer::Progress& progress, Config::JsonLine& answer);

// "faults".
void reportFaults(Board::VirtualBoard& board, Config::JsonLine& answer);

// "seconds", and "buses" with their counts, by chip and by kind of operation.
void reportTime(Board::VirtualBoard& board, Config::JsonLine& answer);

// "buses" with their last transfers, at most `most` each.
void reportTransfers(Board::VirtualBoard& board, const std::vector<std::string>& buses, size_t most,
                     Config::JsonLine& answer);

}  // namespace SmbusService
