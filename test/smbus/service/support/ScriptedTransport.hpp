// SPDX-License-Identifier: Apache-2.0
//
// A connection whose bytes arrive in the pieces that a test lays out.
#pragma once

#include <algorithm>
#include <deque>
#include <string>

#include "smbus/service/Transport.hpp"

namespace SmbusService {

class ScriptedTransport : public Transport {
 public:
  // After the last piece the connection is closed, or silent.
  explicit ScriptedTransport(std::deque<std::string> pieces, bool silent = false)
      : pieces_(std::move(pieces)), silent_(silent) {}

  IoResult receive(std::span<char> into, std::optional<TimePoint> deadline) override {
    deadlines.push_back(deadline);
    if (pieces_.empty()) {
      return {silent_ ? IoStatus::kTimeout : IoStatus::kClosed, 0, 0};
    }
    std::string& piece = pieces_.front();
    const size_t count = std::min(into.size(), piece.size());
    std::copy_n(piece.begin(), count, into.begin());
    piece.erase(0, count);
    if (piece.empty()) {
      pieces_.pop_front();
    }
    return {IoStatus::kDone, count, 0};
  }
  IoResult send(std::string_view, TimePoint) override { return {}; }
  void stopReceiving() override {}
  void shutdown() override {}

  std::vector<std::optional<TimePoint>> deadlines;  // one for each receive()

 private:
  std::deque<std::string> pieces_;
  bool silent_;
};

}  // namespace SmbusService
