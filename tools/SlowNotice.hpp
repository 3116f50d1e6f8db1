// SPDX-License-Identifier: Apache-2.0
//
// Tells the operator why nothing happens while a call of the library blocks.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace Nimbo {

// Prints the text to standard error if it lives longer than the patience.
class SlowNotice {
 public:
  SlowNotice(std::string text, std::chrono::milliseconds patience);
  ~SlowNotice();
  SlowNotice(const SlowNotice&) = delete;
  SlowNotice& operator=(const SlowNotice&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace Nimbo
