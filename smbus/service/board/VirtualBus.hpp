// SPDX-License-Identifier: Apache-2.0
//
// One bus of the virtual board behind the service's bus interface: it turns an operation into the
// bytes of SMBus 3.0 section 6.5 on the chips of its segment.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/board/Agenda.hpp"
#include "smbus/service/board/BusFaults.hpp"
#include "smbus/service/board/TransferLog.hpp"
#include "smbus/service/board/Wire.hpp"
#include "smbus/service/board/Wiring.hpp"

namespace SmbusService::Board {

struct BusSettings {
  uint32_t clockHz = 100'000;
  Time timeout = std::chrono::milliseconds(35);  // for an operation that names none
  bool waitBusTime = false;                      // an operation takes as long as its bits would
};

// What has gone over the bus since the board was switched on.
struct BusCounts {
  KindCounts all;
  KindCounts unanswered;  // of these, what went to addresses where no chip is in reach
};

// perform() is for one thread at a time; the others may be called beside it.
class VirtualBus : public Bus {
 public:
  // Clock, wiring and agenda outlive the bus.
  VirtualBus(std::string name, const BusSettings& settings, BoardClock& clock, Wiring& wiring,
             Agenda& agenda)
      : name_(std::move(name)),
        settings_(settings),
        clock_(clock),
        wiring_(wiring),
        agenda_(agenda) {}

  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const BusSettings& settings() const { return settings_; }

  // For the time when the board is put together.
  [[nodiscard]] Segment& segment() { return segment_; }

  // Held while chips of this bus are touched from anywhere else than perform().
  [[nodiscard]] std::mutex& chipsInUse() { return chipsInUse_; }

  [[nodiscard]] int perform(const Operation& operation, std::string& answer) override;

  // A fault comes into force, or ends; an operation that hangs for it comes back. False: it was not
  // in force.
  void addFault(BusFault fault);
  [[nodiscard]] bool removeFault(uint32_t id);
  [[nodiscard]] std::vector<BusFault> faults() const;

  [[nodiscard]] BusCounts counts() const;
  [[nodiscard]] KindCounts countsOf(const Seat& seat) const;
  [[nodiscard]] std::vector<Transfer> lastTransfers(size_t most) const;

 private:
  [[nodiscard]] bool waitOutHang(std::unique_lock<std::mutex>& lock);
  [[nodiscard]] int stuckLine();
  void count(const Operation& operation, Time at, int error);
  [[nodiscard]] int transfer(const Operation& operation, std::string& answer);
  [[nodiscard]] int send(const Operation& operation);
  [[nodiscard]] int receive(const Operation& operation, std::string& answer);
  [[nodiscard]] int sendByte(uint8_t byte);
  [[nodiscard]] int broken() const;
  [[nodiscard]] int acknowledgedOr(bool acknowledged, int otherwise) const;
  [[nodiscard]] Time duration() const;

  std::string name_;
  BusSettings settings_;
  BoardClock& clock_;
  Wiring& wiring_;
  Agenda& agenda_;

  mutable std::mutex chipsInUse_;
  std::condition_variable faultEnded_;
  Segment segment_;
  BusFaults faults_;
  Wire wire_{segment_, faults_};
  Time timeout_{0};  // of the operation under way
  BusCounts counts_;
  TransferLog log_;
};

}  // namespace SmbusService::Board
