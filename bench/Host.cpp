// SPDX-License-Identifier: Apache-2.0
//
// A host that listens to nothing: its trace drops every line, and its timers never fire.
#include "pl/pl_host.h"

int pl_trace(int, const char*, ...) { return 0; }

pl_timer_handle pl_timer_add(pl_timer_callback, void*) { return 1; }

int pl_timer_set(pl_timer_handle, uint32_t) { return 0; }

void pl_timer_delete(pl_timer_handle) {}

void pl_fd_watcher_delete(pl_fd_watcher_handle) {}
