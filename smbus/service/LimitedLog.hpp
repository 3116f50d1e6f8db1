// SPDX-License-Identifier: Apache-2.0
//
// A log that no client can flood: so many lines a second, and then the number of those left out.
// Errors always get through.
#pragma once

#include <cstdint>
#include <mutex>

#include "smbus/service/Clock.hpp"
#include "smbus/service/Log.hpp"

namespace SmbusService {

class LimitedLog : public Log {
 public:
  LimitedLog(Log& log, Clock& clock, uint32_t linesPerSecond)
      : log_(log), clock_(clock), linesPerSecond_(linesPerSecond) {}
  // What was left out last is told here.
  ~LimitedLog() override;

  void line(Level level, std::string_view text) override;

 private:
  void tellWhatIsMissing();

  Log& log_;
  Clock& clock_;
  const uint32_t linesPerSecond_;
  std::mutex mutex_;  // held for the members below
  TimePoint second_;  // when the current one began
  uint32_t lines_ = 0;
  uint64_t leftOut_ = 0;
};

}  // namespace SmbusService
