// SPDX-License-Identifier: Apache-2.0
//
// What carries the buses: Linux's i2c adapters and the virtual board.
#pragma once

#include <memory>

#include "smbus/service/Bus.hpp"
#include "smbus/service/Clock.hpp"
#include "smbus/service/Configuration.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService {

class BackEnds {
 public:
  // Builds the virtual board, if the configuration names one, and sees that it has every bus that
  // is asked of it. Opens no device. Throws Config::FileError. All arguments outlive this object
  // and the buses that it opens.
  BackEnds(const Config::JsonFile& file, const Configuration& configuration, Clock& clock);
  ~BackEnds();

  // Null: the configuration names none.
  [[nodiscard]] const std::shared_ptr<Board::VirtualBoard>& board() const { return board_; }

  // Throws Config::FileError, at the place of the back-end in the configuration.
  [[nodiscard]] std::shared_ptr<Bus> open(const BusEntry& entry) const;

 private:
  [[nodiscard]] std::shared_ptr<Bus> openAt(const std::string& pointer,
                                            const LinuxBackEnd& backEnd) const;
  [[nodiscard]] std::shared_ptr<Bus> openAt(const std::string& pointer,
                                            const VirtualBackEnd& backEnd) const;

  const Config::JsonFile& file_;
  const Configuration& configuration_;
  std::shared_ptr<Board::VirtualBoard> board_;  // null: none
};

}  // namespace SmbusService
