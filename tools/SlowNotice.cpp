// SPDX-License-Identifier: Apache-2.0
#include "tools/SlowNotice.hpp"

#include <cstdio>
#include <utility>

namespace Nimbo {

SlowNotice::SlowNotice(std::string text, std::chrono::milliseconds patience)
    : thread_([this, text = std::move(text), patience] {
        std::unique_lock lock(mutex_);
        if (!ended_.wait_for(lock, patience, [this] { return over_; })) {
          std::fprintf(stderr, "%s\n", text.c_str());
        }
      }) {}

SlowNotice::~SlowNotice() {
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  ended_.notify_one();
  thread_.join();
}

}  // namespace Nimbo
