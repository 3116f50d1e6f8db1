// SPDX-License-Identifier: Apache-2.0
//
// The two lines of a bus with the master's end of them: bytes with START, repeated START,
// acknowledge and STOP, to whatever chips the segments reach. It computes the transfer's PEC and
// counts its bits.
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/Pec.hpp"
#include "smbus/service/board/Segment.hpp"

namespace SmbusService::Board {

class Wire {
 public:
  explicit Wire(Segment& segment) : segment_(segment) {}

  // START, or a repeated START within a transfer, and the address byte. Returns whether any chip
  // acknowledged. What a mux was told in this transfer joins its channels after the STOP only.
  [[nodiscard]] bool start(uint8_t address, bool read);

  // Returns whether any chip acknowledged.
  [[nodiscard]] bool write(uint8_t byte);

  // Chips that answer at once pull the lines low together: the byte is the AND of theirs.
  [[nodiscard]] uint8_t read();

  void stop();

  // Of the transfer under way, or of the last one.
  [[nodiscard]] uint8_t pec() const { return pec_.value(); }
  [[nodiscard]] uint32_t bits() const { return bits_; }  // START, STOP 1 each, a byte 9
  [[nodiscard]] Time held() const { return held_; }      // how long chips held SCL low

 private:
  void begin();
  void hear(Chip& chip);

  Segment& segment_;
  bool busy_ = false;
  std::vector<Seat*> answering_;  // those that acknowledged all bytes since the last START
  std::vector<Seat*> addressed_;  // all that have heard a START since the last STOP
  std::vector<Seat*> found_;      // scratch
  Pec pec_;
  uint32_t bits_ = 0;
  Time held_{0};
};

}  // namespace SmbusService::Board
