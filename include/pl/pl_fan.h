/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_fan.h - fans.
 */
#ifndef PL_FAN_H
#define PL_FAN_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_fan pl_fan;

typedef struct pl_fan_ops {
  uint64_t size; /* 32 */
  /* A text about the fan for a human; drivers without one return 0 and leave *text alone. */
  pl_status (*debug_info)(const pl_fan* fan, char** text);
  /* Speed in revolutions per minute. PL_STATUS_FAULT when the fan is stalled. */
  pl_status (*get_rpm)(pl_fan* fan, int* rpm);
  /* Asks for a speed in revolutions per minute. Fans that share one duty cycle obey the one that
   * is its master; the others return PL_STATUS_OK and do nothing. */
  pl_status (*set_rpm)(pl_fan* fan, int rpm);
} pl_fan_ops;

/* Owned by the library, for the life of the process. */
struct pl_fan {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_fan_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_fan_ops, 32);
PL_RECORD_LAYOUT(pl_fan);

/* See pl_system_init. */
PL_API pl_status pl_fan_init(const char* json);

/*
 * Makes a fan from a device description, a JSON text that must stay readable for the call. Two
 * calls make two records, also for one text; descriptions with the same "did" share one device.
 * Null on failure, with the reason traced. A description that lacks a key its driver needs stops
 * the process on an assertion; a driver without fans throws a std::exception.
 */
PL_API pl_fan* pl_fan_add(const char* json);

PL_END_DECLS

#endif
