/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_system.h - the board as a whole: power-off, power-cycle, reload cause.
 */
#ifndef PL_SYSTEM_H
#define PL_SYSTEM_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_system pl_system;

/* Operations of a system. `size` is this record's own size; a null slot is not supported. */
typedef struct pl_system_ops {
  uint64_t size; /* 40 */
  pl_status (*poweroff)(pl_system* system);
  pl_status (*powercycle)(pl_system* system);
  pl_status (*get_reload_cause)(pl_system* system, char (*cause)[100], long* time,
                                char (*description)[500]);
  void (*reserved)(void); /* null on this board */
} pl_system_ops;

struct pl_system {
  uint64_t host; /* the host's own; 0 when the record is made */
  const pl_system_ops* ops;
};

PL_SIZE(pl_system_ops, 40);
PL_FIELD_AT(pl_system_ops, poweroff, 8);
PL_FIELD_AT(pl_system_ops, reserved, 32);
PL_FIELD_AT(pl_system, ops, 8);
PL_SIZE(pl_system, 16);

/*
 * Starts the library: connects to the SMBus service (up to 30 attempts, one second apart, which
 * block the caller) and loads the topology, a JSON text. Every pl_X_init is this same call under
 * another name; the first that succeeds connects, and a text that is byte for byte the one already
 * loaded is kept at no cost. Returns PL_STATUS_OK; PL_STATUS_FAILED when the service cannot be
 * reached; PL_STATUS_INVALID when the text is not JSON (a tree loaded before stays);
 * PL_STATUS_REMOTE when no tree could be built. JSON that is not a topology stops the process on an
 * assertion. The text is copied.
 */
PL_API pl_status pl_system_init(const char* json);

/* A new record for the board; each call makes one, and the caller frees it with free(3) or
 * keeps it for ever. Never null. The name is only traced. */
PL_API pl_system* pl_system_add(const char* name);

/* Switches the board off, or off and on again, by setting a bit of the device labelled "PSoC".
 * `system` is not looked at. Returns the status of the register write. A topology without such a
 * device stops the process. */
PL_API pl_status pl_system_poweroff(pl_system* system);
PL_API pl_status pl_system_powercycle(pl_system* system);

/* Always PL_STATUS_UNSUPPORTED: this board reports no reload cause. Writes none of the outputs. */
PL_API pl_status pl_system_get_reload_cause(pl_system* system, char (*cause)[100], long* time,
                                            char (*description)[500]);

/* What every pl_X_init calls, with its own name as `caller` (used in traces) and 30 `retries`. */
PL_API int nimboLibraryInit(const char* caller, const char* json, int retries);

/* The first half of it: connects to the SMBus service once for the process. Returns 0 or
 * PL_STATUS_FAILED; with `retries` of 0 or less no attempt is made. */
PL_API int plSockInit(const char* caller, int retries);

PL_END_DECLS

#endif
