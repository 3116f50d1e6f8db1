// SPDX-License-Identifier: Apache-2.0
//
// The byte stream of one connection.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "smbus/service/Clock.hpp"

namespace SmbusService {

enum class IoStatus { kDone, kClosed, kTimeout, kFailed };

struct IoResult {
  IoStatus status = IoStatus::kDone;
  size_t bytes = 0;  // received, when kDone
  int error = 0;     // an errno value, when kFailed
};

// receive() and send() are for one thread at a time, shutdown() for any.
class Transport {
 public:
  virtual ~Transport() = default;

  // Waits for bytes, without an end when there is no deadline, and gives those that are there:
  // at least one.
  [[nodiscard]] virtual IoResult receive(std::span<char> into,
                                         std::optional<TimePoint> deadline) = 0;

  // Sends all of `bytes`.
  [[nodiscard]] virtual IoResult send(std::string_view bytes, TimePoint deadline) = 0;

  // No more is to be received: a receive() under way or to come returns what has arrived, then
  // kClosed. Answers can still be sent.
  virtual void stopReceiving() = 0;

  // The connection is over, for both ends.
  virtual void shutdown() = 0;
};

}  // namespace SmbusService
