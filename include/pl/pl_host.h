/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_host.h - the services that the host gives the library.
 *
 * The host defines these functions with C linkage where the dynamic linker finds them (in the
 * executable, linked with -rdynamic, or in a library loaded before this one). The library imports
 * each weakly and works without it:
 *
 *   without pl_trace               nothing is printed;
 *   without pl_timer_add           no timer can be made; a device that polls (a PSoC, a transceiver
 *                                  CPLD) or an LED that blinks then stops the process on the
 *                                  assertion "pollStart()" or "blinkTimer_";
 *   without pl_timer_set           as if it had returned a failure;
 *   without pl_timer_delete        timers are left behind;
 *   without pl_fd_watcher_delete   watchers are left behind (the library makes none itself).
 *
 * The library runs on one thread: the host calls the library, and lets its timers call back, from
 * the same thread, never from two at once and never from a signal handler.
 */
#ifndef PL_HOST_H
#define PL_HOST_H

#include "pl/pl_abi.h"

PL_BEGIN_DECLS

/* A timer or watcher of the host, as the host made it up. 0 is none. */
typedef uint64_t pl_timer_handle;
typedef uint64_t pl_fd_watcher_handle;

/* Called by the host's event loop when a timer fires. */
typedef void (*pl_timer_callback)(void* context);

/*
 * Writes one trace line. `format` is as for printf(3); no line end belongs to it (a few old texts
 * carry one all the same). The level says how much a line matters, 0 most:
 *   0 errors, warnings, creation steps        4 one line per host callback and per SMBus batch
 *   1 SMBus proxy callbacks                   5 data: JSON texts, simulated registers
 *   2 topology loading and search             6, 7 driver detail: polls, LEDs, fan duty
 *   3 factory steps, tolerated failures
 * All pointers among the arguments live only for the call. The result is ignored.
 */
PL_API int pl_trace(int level, const char* format, ...) __attribute__((weak, format(printf, 2, 3)));

/* Makes a timer that calls callback(context) when it fires; it is not armed yet. Returns a handle
 * that is not 0, or 0 on failure. */
PL_API pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context)
    __attribute__((weak));

/* Arms the timer to fire once, `milliseconds` (1 or more) from now; arming it again moves that
 * time. A timer that has fired stays idle until it is set again, which its callback usually does.
 * Returns 0 on success. */
PL_API int pl_timer_set(pl_timer_handle timer, uint32_t milliseconds) __attribute__((weak));

/* Ends the timer; its handle is not used again. */
PL_API void pl_timer_delete(pl_timer_handle timer) __attribute__((weak));

/* Ends a file-descriptor watcher. */
PL_API void pl_fd_watcher_delete(pl_fd_watcher_handle watcher) __attribute__((weak));

PL_END_DECLS

#endif
