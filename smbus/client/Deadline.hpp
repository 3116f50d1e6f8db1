// SPDX-License-Identifier: Apache-2.0
//
// The moment at which a call gives up, however many waits it is made of.
#pragma once

#include <chrono>

namespace PlatformLibrary {

class Deadline {
 public:
  // `limit` from now, at most INT_MAX milliseconds.
  explicit Deadline(std::chrono::milliseconds limit)
      : end_(std::chrono::steady_clock::now() + limit) {}

  // Rounded up, so that a wait of that length never ends early; 0 once the moment has passed.
  [[nodiscard]] int millisecondsLeft() const {
    const auto left = end_ - std::chrono::steady_clock::now();
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return rounded > 0 ? static_cast<int>(rounded) : 0;
  }

 private:
  std::chrono::steady_clock::time_point end_;
};

}  // namespace PlatformLibrary
