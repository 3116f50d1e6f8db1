// SPDX-License-Identifier: Apache-2.0
#include "tools/StopNotice.hpp"

#include <unistd.h>

#include <array>
#include <csignal>

namespace Nimbo {

namespace {

// A handler may use no memory but what is there already.
std::array<char, 256> notice;
volatile std::sig_atomic_t noticeSize = 0;

void tell(int /*signal*/) {
  if (::write(STDERR_FILENO, notice.data(), static_cast<size_t>(noticeSize)) < 0) {
    return;  // nobody is there to be told, and the process ends anyway
  }
}

}  // namespace

StopNotice::StopNotice(const std::string& device) {
  const std::string text =
      "nimbo: " + device + ": the library ends the process at this device, for the reason above\n";
  noticeSize = static_cast<int>(text.copy(notice.data(), notice.size()));
  std::signal(SIGABRT, tell);
}

StopNotice::~StopNotice() { std::signal(SIGABRT, SIG_DFL); }

}  // namespace Nimbo
