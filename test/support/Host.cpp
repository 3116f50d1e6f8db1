// SPDX-License-Identifier: Apache-2.0
#include "test/support/Host.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iostream>

namespace Doubles {

namespace {

constexpr pl_timer_handle kFirstTimer = 0x7100000001;  // does not fit into 32 bits

std::string vprinted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, again)), '\0');
  va_end(again);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

// Null for handle 0, which is no timer and which nothing can be done with.
Timer* liveTimer(pl_timer_handle handle) {
  if (handle == 0) {
    return nullptr;
  }
  const auto it = host().timers.find(handle);
  if (it == host().timers.end() || it->second.deleted) {
    ADD_FAILURE() << "no timer has the handle " << handle;
    return nullptr;
  }
  return &it->second;
}

}  // namespace

std::string printed(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = vprinted(format, arguments);
  va_end(arguments);
  return text;
}

std::ostream& operator<<(std::ostream& out, const Trace& trace) {
  return out << "trace " << trace.level << ": " << trace.text;
}

Timer& Host::timer() {
  static Timer none{};
  if (timers.size() != 1) {
    ADD_FAILURE() << timers.size() << " timers instead of one";
    return none;
  }
  return timers.begin()->second;
}

void Host::fire(Timer& timer) {
  if (!timer.armed || timer.deleted) {
    ADD_FAILURE() << "the timer is not armed";
    return;
  }
  timer.armed = false;
  timer.callback(timer.context);
}

std::vector<std::string> Host::texts(int level) const {
  std::vector<std::string> found;
  for (const Trace& trace : traces) {
    if (trace.level == level) {
      found.push_back(trace.text);
    }
  }
  return found;
}

bool Host::traced(int level, const std::string& text) const {
  return std::find(traces.begin(), traces.end(), Trace{level, text}) != traces.end();
}

Host& host() {
  static Host host;
  return host;
}

}  // namespace Doubles

using Doubles::host;

int pl_trace(int level, const char* format, ...) {
  if (!host().keepsTraces && !host().echoesTraces) {
    return 0;
  }
  va_list arguments;
  va_start(arguments, format);
  const Doubles::Trace trace{level, Doubles::vprinted(format, arguments)};
  va_end(arguments);
  if (host().echoesTraces) {
    std::cerr << trace << std::endl;
  }
  if (host().keepsTraces) {
    host().traces.push_back(trace);
  }
  return 0;
}

pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context) {
  if (host().refusesTimers) {
    return 0;
  }
  const pl_timer_handle handle = Doubles::kFirstTimer + host().timers.size();
  host().timers[handle] = {.callback = callback, .context = context, .intervals = {}};
  return handle;
}

int pl_timer_set(pl_timer_handle handle, uint32_t milliseconds) {
  Doubles::Timer* timer = Doubles::liveTimer(handle);
  if (timer == nullptr) {
    return -1;
  }
  timer->intervals.push_back(milliseconds);
  timer->armed = host().timerSetStatus == 0;
  return host().timerSetStatus;
}

void pl_timer_delete(pl_timer_handle handle) {
  if (Doubles::Timer* timer = Doubles::liveTimer(handle)) {
    timer->deleted = true;
  }
}

void pl_fd_watcher_delete(pl_fd_watcher_handle watcher) {
  host().deletedWatchers.push_back(watcher);
}
