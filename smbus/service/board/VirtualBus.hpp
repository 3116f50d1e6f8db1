// SPDX-License-Identifier: Apache-2.0
//
// One bus of the virtual board behind the service's bus interface: it turns an operation into the
// bytes of SMBus 3.0 section 6.5 on the chips of its segment.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/board/BoardClock.hpp"
#include "smbus/service/board/Wire.hpp"
#include "smbus/service/board/Wiring.hpp"

namespace SmbusService::Board {

struct BusSettings {
  uint32_t clockHz = 100'000;
  Time timeout = std::chrono::milliseconds(35);  // for an operation that names none
  bool waitBusTime = false;                      // an operation takes as long as its bits would
};

// What has gone over the bus since the board was switched on.
struct BusCount {
  uint64_t transfers = 0;
  uint64_t bits = 0;
};

// perform() is for one thread at a time; the others may be called beside it.
class VirtualBus : public Bus {
 public:
  // Clock and wiring outlive the bus.
  VirtualBus(std::string name, const BusSettings& settings, BoardClock& clock, Wiring& wiring)
      : name_(std::move(name)), settings_(settings), clock_(clock), wiring_(wiring) {}

  [[nodiscard]] const std::string& name() const { return name_; }

  // For the time when the board is put together.
  [[nodiscard]] Segment& segment() { return segment_; }

  // Held while chips of this bus are touched from anywhere else than perform().
  [[nodiscard]] std::mutex& chipsInUse() { return chipsInUse_; }

  [[nodiscard]] int perform(const Operation& operation, std::string& answer) override;

  [[nodiscard]] BusCount count() const;
  [[nodiscard]] uint32_t bitsOfLast() const;

 private:
  [[nodiscard]] int transfer(const Operation& operation, std::string& answer);
  [[nodiscard]] int send(const Operation& operation);
  [[nodiscard]] int receive(const Operation& operation, std::string& answer);
  [[nodiscard]] int sendByte(uint8_t byte);
  [[nodiscard]] bool hung() const { return wire_.held() > timeout_; }
  [[nodiscard]] Time duration() const;

  std::string name_;
  BusSettings settings_;
  BoardClock& clock_;
  Wiring& wiring_;

  mutable std::mutex chipsInUse_;
  Segment segment_;
  Wire wire_{segment_};
  Time timeout_{0};  // of the operation under way
  BusCount count_;
};

}  // namespace SmbusService::Board
