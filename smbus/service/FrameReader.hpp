// SPDX-License-Identifier: Apache-2.0
//
// Takes messages out of a connection's bytes. Its memory grows with the bytes that have arrived,
// whatever length a frame announces.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "smbus/service/Limits.hpp"
#include "smbus/service/Transport.hpp"

namespace SmbusService {

enum class FrameStatus {
  kMessage,
  kClosed,     // between two frames
  kTruncated,  // closed within a frame
  kTooLong,
  kTooSlow,
  kFailed,
};

// For the log.
[[nodiscard]] const char* describe(FrameStatus status);

struct Frame {
  FrameStatus status = FrameStatus::kClosed;
  std::string_view message;  // when kMessage; valid until the next call of next()
};

class FrameReader {
 public:
  FrameReader(Transport& transport, Clock& clock, const Limits& limits)
      : transport_(transport), clock_(clock), limits_(limits) {}

  // Waits for the next frame, however long the connection is idle; a frame once begun must be
  // complete within limits.frameMs. After anything but kMessage the connection is of no more use.
  [[nodiscard]] Frame next();

  // Bytes of memory held for the connection.
  [[nodiscard]] size_t memory() const { return buffer_.capacity(); }

 private:
  void dropTaken();
  [[nodiscard]] bool wholeHeader() const;
  [[nodiscard]] size_t frameBytes() const;
  [[nodiscard]] FrameStatus receiveMore();

  Transport& transport_;
  Clock& clock_;
  const Limits& limits_;
  std::string buffer_;                 // its size is what fits, not what has arrived
  size_t arrived_ = 0;                 // bytes in the buffer
  size_t taken_ = 0;                   // of these, the frame given last
  std::optional<TimePoint> deadline_;  // of the frame under way
};

}  // namespace SmbusService
