// SPDX-License-Identifier: Apache-2.0
//
// What has been answered and not been written yet: bytes as they came and went, copied and nothing
// more, in a bounded piece of memory. Whoever serves a client never waits for whoever writes; what
// does not fit is counted instead.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "smbus/service/Clock.hpp"
#include "smbus/service/Peer.hpp"

namespace SmbusService::Recording {

// One answered transaction. Borrows its bytes.
struct Entry {
  uint64_t number = 0;
  TimePoint begun;
  TimePoint ended;
  Peer client;
  std::optional<size_t> failedRequest;
  std::string_view request;   // a Smbus.TransactionRequest
  std::string_view response;  // a Smbus.TransactionResponse
};

// What was waiting, in the order in which it was put.
class Batch {
 public:
  // Takes the next entry, which lives as long as the batch is not changed. False: there is none.
  [[nodiscard]] bool next(Entry& entry);
  [[nodiscard]] uint64_t dropped() const { return dropped_; }

 private:
  friend class RecordQueue;

  std::string bytes_;
  size_t position_ = 0;
  uint64_t dropped_ = 0;  // after those that are here
};

// put() is for any thread, the rest for the one that writes.
class RecordQueue {
 public:
  RecordQueue(size_t mostBytes, Clock& clock) : mostBytes_(mostBytes), clock_(clock) {}

  void put(const Entry& entry);

  // Exchanges what waits for `batch`, whose memory serves the queue from now on.
  void take(Batch& batch);

  // Waits until half of the queue is used, until stop(), or until `deadline`. False: stopped.
  [[nodiscard]] bool wait(TimePoint deadline);
  void stop();

 private:
  const size_t mostBytes_;
  Clock& clock_;

  std::mutex mutex_;
  std::condition_variable wake_;
  std::string bytes_;
  uint64_t dropped_ = 0;
  bool stopped_ = false;
};

}  // namespace SmbusService::Recording
