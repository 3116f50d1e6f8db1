// SPDX-License-Identifier: Apache-2.0
//
// The host that unit tests run under: it keeps every trace, makes timers that fire by hand, and
// refuses on order. Linking test_host provides it.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "pl/pl_host.h"

namespace Doubles {

// The text that printf would write.
std::string printed(const char* format, ...) __attribute__((format(printf, 1, 2)));

struct Trace {
  int level;
  std::string text;

  bool operator==(const Trace&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Trace& trace);

struct Timer {
  pl_timer_callback callback;
  void* context;
  std::vector<uint32_t> intervals;  // of every time it was set, in milliseconds
  bool armed = false;
  bool deleted = false;
};

struct Host {
  std::vector<Trace> traces;
  bool keepsTraces = true;
  bool echoesTraces = false;  // also to standard error, where a death test sees them

  std::map<pl_timer_handle, Timer> timers;  // every timer ever made
  bool refusesTimers = false;
  int timerSetStatus = 0;  // what pl_timer_set returns; the timer is armed only with 0

  std::vector<pl_fd_watcher_handle> deletedWatchers;

  // The one timer that was made; a failure of the test when there is none or more than one.
  Timer& timer();
  // Lets an armed timer fire.
  void fire(Timer& timer);

  // The texts of one level, in order.
  [[nodiscard]] std::vector<std::string> texts(int level) const;
  [[nodiscard]] bool traced(int level, const std::string& text) const;
};

// The host of this process.
Host& host();

}  // namespace Doubles
