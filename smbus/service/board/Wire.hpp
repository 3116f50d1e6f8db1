// SPDX-License-Identifier: Apache-2.0
//
// The two lines of a bus with the master's end of them: bytes with START, repeated START,
// acknowledge and STOP, to whatever chips the segments reach. It computes the transfer's PEC and
// counts its bits. Faults of chips strike here.
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/BusFaults.hpp"
#include "smbus/service/board/Pec.hpp"
#include "smbus/service/board/Segment.hpp"

namespace SmbusService::Board {

class Wire {
 public:
  // Both outlive the wire.
  Wire(Segment& segment, BusFaults& faults) : segment_(segment), faults_(faults) {}

  // A transfer begins; nothing is on the lines yet.
  void begin();

  // START, or a repeated START within a transfer, and the address byte. Returns whether any chip
  // acknowledged. What a mux was told in this transfer joins its channels after the STOP only.
  [[nodiscard]] bool start(uint8_t address, bool read);

  // Returns whether any chip acknowledged.
  [[nodiscard]] bool write(uint8_t byte);

  // Chips that answer at once pull the lines low together: the byte is the AND of theirs.
  [[nodiscard]] uint8_t read();

  // The packet error code of what has gone over the lines since begin(), from the master and to it.
  [[nodiscard]] bool writePec();
  void readPec();

  // SCL is held low for so long, by whomever.
  void hold(Time duration);

  void stop();

  // Whether the transfer was cut short by a STOP; nothing is heard of it any more.
  [[nodiscard]] bool cut() const { return cut_; }
  // Those that were addressed in this transfer.
  [[nodiscard]] const std::vector<Seat*>& addressed() const { return addressed_; }

  // Of the transfer under way, or of the last one.
  [[nodiscard]] uint8_t pec() const { return pec_.value(); }
  [[nodiscard]] uint32_t bits() const { return bits_; }  // START, STOP 1 each, a byte 9
  [[nodiscard]] Time held() const { return held_; }      // how long chips held SCL low

 private:
  void hear(Chip& chip);
  [[nodiscard]] bool present(Seat& seat);
  [[nodiscard]] bool acceptedBy(Seat& seat, uint8_t byte);
  [[nodiscard]] uint8_t gather();
  [[nodiscard]] bool goesOn();
  [[nodiscard]] bool pecIsSpoilt();

  Segment& segment_;
  BusFaults& faults_;
  bool cut_ = false;
  uint32_t bytes_ = 0;            // after the addresses
  std::vector<Seat*> answering_;  // those that acknowledged all bytes since the last START
  std::vector<Seat*> addressed_;  // all that were addressed since begin()
  std::vector<Seat*> found_;      // scratch
  Pec pec_;
  uint32_t bits_ = 0;
  Time held_{0};
};

}  // namespace SmbusService::Board
