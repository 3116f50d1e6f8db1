/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_slot.h - bays that hold a fan tray or a power supply, or nothing.
 */
#ifndef PL_SLOT_H
#define PL_SLOT_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_slot pl_slot;

typedef struct pl_slot_ops {
  uint64_t size; /* 16 */
  /* PL_STATUS_OK when something is in the bay: *descriptor is then a text that describes it,
   * allocated with malloc and freed by the caller. PL_STATUS_EMPTY when nothing is there. */
  pl_status (*get_presence)(pl_slot* slot, char** descriptor);
} pl_slot_ops;

/* Owned by the library, for the life of the process. */
struct pl_slot {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_slot_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_slot_ops, 16);
PL_RECORD_LAYOUT(pl_slot);

/* See pl_system_init. */
PL_API pl_status pl_slot_init(const char* json);

/* As pl_fan_add, for a bay. */
PL_API pl_slot* pl_slot_add(const char* json);

PL_END_DECLS

#endif
