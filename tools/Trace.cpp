// SPDX-License-Identifier: Apache-2.0
#include "tools/Trace.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace Nimbo {

namespace {

constexpr int kSevere = 0;
constexpr int kAccess = 3;     // failed accesses are traced there
constexpr size_t kKept = 64;   // lines
constexpr size_t kReason = 2;  // lines

bool isWarning(const std::string& text) {
  static constexpr std::array kMarks = {"WARNING", "rror",      "ailed",   "failure", "invalid",
                                        "not f",   "could not", "ouldn't", "Unable"};
  return std::any_of(kMarks.begin(), kMarks.end(),
                     [&](const char* mark) { return text.find(mark) != std::string::npos; });
}

// Old texts carry a line end of their own.
std::string trimmed(std::string text) {
  text.erase(text.find_last_not_of(" \n") + 1);
  return text;
}

}  // namespace

void Trace::take(int level, const std::string& line) {
  const std::string text = trimmed(line);
  if (level <= printed_) {
    std::fprintf(stderr, "[%d] %s\n", level, text.c_str());
  }
  if (level == kSevere && isWarning(text)) {
    ++warnings_;
  }
  if (level == kSevere || level == kAccess) {
    if (kept_.size() == kKept) {
      kept_.erase(kept_.begin());
    }
    kept_.push_back({level, text});
  }
}

std::string Trace::reason() const {
  const auto access = std::find_if(kept_.rbegin(), kept_.rend(), [](const Line& line) {
    return line.level == kAccess && isWarning(line.text);
  });
  if (access != kept_.rend()) {
    return access->text;
  }
  const bool warned = std::any_of(kept_.begin(), kept_.end(),
                                  [](const Line& line) { return isWarning(line.text); });
  std::string reason;
  size_t lines = 0;
  for (auto line = kept_.rbegin(); line != kept_.rend() && lines < kReason; ++line) {
    if (line->level == kSevere && (isWarning(line->text) || !warned)) {
      reason.insert(0, reason.empty() ? line->text : line->text + "; ");
      ++lines;
    }
  }
  return reason;
}

}  // namespace Nimbo
