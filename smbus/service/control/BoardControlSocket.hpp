// SPDX-License-Identifier: Apache-2.0
//
// The control socket of a service's virtual board. While it is there, what is due on the board
// happens in time.
#pragma once

#include "smbus/service/control/BoardControl.hpp"
#include "smbus/service/control/ControlSocket.hpp"

namespace SmbusService {

// Beside the socket of the service's clients.
[[nodiscard]] std::string defaultControlPath(const std::string& socketPath);

class BoardControlSocket {
 public:
  // `board` may be null, see BoardControl. Throws ListenError. Limits, clock and log outlive it.
  BoardControlSocket(const SocketSettings& settings, const Limits& limits, Clock& clock, Log& log,
                     std::shared_ptr<Board::VirtualBoard> board);

 private:
  std::shared_ptr<Board::VirtualBoard> board_;
  BoardControl control_;
  ControlSocket socket_;
};

}  // namespace SmbusService
