// SPDX-License-Identifier: Apache-2.0
//
// The one place where the reading thread and the host's thread meet. Neither waits for the other:
// the lock is held for a move of the contents.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "ipmi/Clock.hpp"
#include "ipmi/Reading.hpp"

namespace IpmiPlugin {

// What has become known since the mailbox was emptied last.
struct News {
  std::optional<Reading> reading;      // the latest
  TimePoint taken;                     // when that was begun
  std::optional<std::string> failure;  // why there has been none since
};

class Mailbox {
 public:
  void put(Reading reading, TimePoint taken) {
    const std::lock_guard lock(mutex_);
    news_ = {std::move(reading), taken, std::nullopt};
  }

  void putFailure(std::string why) {
    const std::lock_guard lock(mutex_);
    news_.failure = std::move(why);
  }

  // Empties the mailbox.
  [[nodiscard]] News take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(news_, {});
  }

 private:
  std::mutex mutex_;
  News news_;
};

}  // namespace IpmiPlugin
