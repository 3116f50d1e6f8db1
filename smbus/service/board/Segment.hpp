// SPDX-License-Identifier: Apache-2.0
//
// A piece of bus: the chips soldered to its two lines, and the muxes that may join further pieces
// to it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/Net.hpp"
#include "smbus/service/board/TransferCount.hpp"

namespace SmbusService::Board {

// A chip in its place on the board.
struct Seat {
  std::string label;
  uint8_t address = 0;  // 7 bits
  std::unique_ptr<Chip> chip;
  Pin present;        // low: the chip is not there, nor what is behind it
  bool away = false;  // pulled off the bus: what is behind it is not joined
  KindCounts counts;  // of the transfers that addressed it
};

class Mux;

class Segment {
 public:
  Segment() = default;
  Segment(const Segment&) = delete;
  Segment& operator=(const Segment&) = delete;

  // The address must be free on this segment. The segment owns the chip, and the seat stays where
  // it is for the segment's life.
  Seat& add(std::string label, uint8_t address, std::unique_ptr<Chip> chip);

  // The chip on the segment itself with this address, or null.
  [[nodiscard]] Seat* at(uint8_t address) const { return byAddress_[address & 0x7F]; }

  // Whether the seat is among those that the segment's lines reach now.
  [[nodiscard]] bool reaches(const Seat& seat);

  // Appends every seat with this address that the segment's lines reach now: its own, and those
  // behind the open channels of its muxes.
  void find(uint8_t address, std::vector<Seat*>& found);

 private:
  std::vector<std::unique_ptr<Seat>> seats_;
  std::array<Seat*, 128> byAddress_{};
  struct Joint {
    const Seat* seat;
    Mux* mux;
  };
  std::vector<Joint> joints_;
};

// A chip that joins segments to the one it sits on.
class Mux : public Chip {
 public:
  static constexpr unsigned kMaxChannels = 8;

  explicit Mux(unsigned channels) : channels_(channels) {}

  [[nodiscard]] unsigned channels() const { return channels_; }
  [[nodiscard]] Segment& channel(unsigned number) { return segments_.at(number); }

  // The channels that are joined now, a bit each.
  [[nodiscard]] virtual uint8_t open() = 0;

  void find(uint8_t address, std::vector<Seat*>& found);

 private:
  unsigned channels_;
  std::array<Segment, kMaxChannels> segments_;
};

}  // namespace SmbusService::Board
