// SPDX-License-Identifier: Apache-2.0
//
// A log that keeps its lines.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "smbus/service/Log.hpp"

namespace SmbusService {

class MemoryLog : public Log {
 public:
  void line(Level, std::string_view text) override {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(text);
  }
  // Lines that contain this.
  [[nodiscard]] size_t count(std::string_view part) {
    const std::lock_guard lock(mutex_);
    return static_cast<size_t>(std::count_if(
        lines_.begin(), lines_.end(),
        [part](const std::string& line) { return line.find(part) != std::string::npos; }));
  }
  [[nodiscard]] bool has(std::string_view part) { return count(part) > 0; }

  [[nodiscard]] std::vector<std::string> lines() {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace SmbusService
