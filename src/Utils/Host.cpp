// SPDX-License-Identifier: Apache-2.0
#include "Utils/Host.hpp"

namespace Utils {

pl_timer_handle timerAdd(pl_timer_callback callback, void* context) {
  return pl_timer_add != nullptr ? pl_timer_add(callback, context) : 0;
}

bool timerSet(pl_timer_handle timer, uint32_t milliseconds) {
  return pl_timer_set != nullptr && pl_timer_set(timer, milliseconds) == 0;
}

void timerDelete(pl_timer_handle timer) {
  if (pl_timer_delete != nullptr) {
    pl_timer_delete(timer);
  }
}

}  // namespace Utils
