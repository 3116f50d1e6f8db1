// SPDX-License-Identifier: Apache-2.0
#include "tools/HostServices.hpp"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "pl/pl_host.h"

namespace Nimbo {

namespace {

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format,
                                                            std::va_list arguments) {
  std::array<char, 512> shortText;
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(shortText.data(), shortText.size(), format, arguments);
  std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (text.size() < shortText.size()) {
    text.assign(shortText.data(), text.size());
  } else {
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return text;
}

}  // namespace

EventLoop& eventLoop() {
  static EventLoop loop;
  return loop;
}

Trace& trace() {
  static Trace trace;
  return trace;
}

}  // namespace Nimbo

extern "C" {

int pl_trace(int level, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  Nimbo::trace().take(level, Nimbo::formatted(format, arguments));
  va_end(arguments);
  return 0;
}

pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context) {
  return Nimbo::eventLoop().addTimer(callback, context);
}

int pl_timer_set(pl_timer_handle timer, uint32_t milliseconds) {
  return Nimbo::eventLoop().setTimer(timer, milliseconds) ? 0 : -1;
}

void pl_timer_delete(pl_timer_handle timer) { Nimbo::eventLoop().deleteTimer(timer); }

// This host makes no watchers.
void pl_fd_watcher_delete(pl_fd_watcher_handle) {}
}
