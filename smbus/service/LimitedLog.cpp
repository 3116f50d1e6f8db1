// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/LimitedLog.hpp"

#include <fmt/format.h>

namespace SmbusService {

LimitedLog::~LimitedLog() { tellWhatIsMissing(); }

void LimitedLog::line(Level level, std::string_view text) {
  if (level == Level::kError) {
    log_.line(level, text);
    return;
  }
  const std::scoped_lock lock(mutex_);
  const TimePoint now = clock_.now();
  if (now - second_ >= std::chrono::seconds(1)) {
    tellWhatIsMissing();
    second_ = now;
    lines_ = 0;
  }
  if (lines_ == linesPerSecond_) {
    ++leftOut_;
    return;
  }
  ++lines_;
  log_.line(level, text);
}

void LimitedLog::tellWhatIsMissing() {
  if (leftOut_ != 0) {
    log_.line(Level::kWarning, fmt::format("{} lines left out, as there were more than {} a second",
                                           leftOut_, linesPerSecond_));
    leftOut_ = 0;
  }
}

}  // namespace SmbusService
