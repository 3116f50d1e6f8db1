// SPDX-License-Identifier: Apache-2.0
//
// On each bus the recorded messages, in the order in which they held it. What deviates is answered
// with a failure, and the recording waits for the right one.
#pragma once

#include <deque>
#include <map>
#include <mutex>

#include "smbus/service/recording/Replay.hpp"

namespace SmbusService::Recording {

class StrictReplay : public Replay {
 public:
  StrictReplay(std::vector<Record> records, Log& log);

  Smbus::TransactionResponse answer(const Smbus::TransactionRequest& request) override;

 private:
  using Turns = std::deque<const Record*>;

  // Why `request` is not the next on all its buses; empty: it is.
  [[nodiscard]] std::string deviation(const Smbus::TransactionRequest& request) const;

  const std::vector<Record> records_;
  Log& log_;
  std::mutex mutex_;
  std::map<std::optional<BusKey>, Turns> turns_;
};

}  // namespace SmbusService::Recording
