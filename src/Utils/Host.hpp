// SPDX-License-Identifier: Apache-2.0
//
// The host's services, each of which may be absent (pl/pl_host.h).
#pragma once

#include "pl/pl_host.h"

// One line of trace; a function-like macro so that the compiler checks the format, and so that
// nothing is evaluated where nobody listens.
#define TRACE(level, ...) \
  (pl_trace != nullptr ? static_cast<void>(pl_trace(level, __VA_ARGS__)) : static_cast<void>(0))

namespace Utils {

// As the host's services of the same names; a service that is absent fails.
[[nodiscard]] pl_timer_handle timerAdd(pl_timer_callback callback, void* context);
[[nodiscard]] bool timerSet(pl_timer_handle timer, uint32_t milliseconds);
void timerDelete(pl_timer_handle timer);

}  // namespace Utils
