// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/control/BoardControlSocket.hpp"

namespace SmbusService {
namespace {

TimePoint letHappen(Board::VirtualBoard& board, Clock& clock) {
  board.agenda().runDue();
  const Board::Time next = board.agenda().nextDue();
  return next == Board::kNever ? TimePoint::max() : clock.now() + (next - board.clock().now());
}

}  // namespace

std::string defaultControlPath(const std::string& socketPath) { return socketPath + ".control"; }

BoardControlSocket::BoardControlSocket(const SocketSettings& settings, const Limits& limits,
                                       Clock& clock, Log& log,
                                       std::shared_ptr<Board::VirtualBoard> board)
    : board_(std::move(board)),
      control_(board_, log),
      socket_(
          settings, limits, clock, [this](std::string_view line) { return control_.answer(line); },
          [this, &clock] {
            return board_ == nullptr ? TimePoint::max() : letHappen(*board_, clock);
          }) {}

}  // namespace SmbusService
