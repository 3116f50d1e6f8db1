/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_psu.h - power supplies.
 */
#ifndef PL_PSU_H
#define PL_PSU_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_psu pl_psu;

typedef struct pl_psu_ops {
  uint64_t size;          /* 72 */
  void (*reserved)(void); /* null */
  /* 1 when the supply's output is good, 0 when it is off; PL_STATUS_FAULT when it is on and not
   * good. */
  pl_status (*get_power_ok)(pl_psu* psu, int* ok);
  pl_status (*get_input_current)(pl_psu* psu, float* amperes);
  pl_status (*get_output_current)(pl_psu* psu, float* amperes);
  pl_status (*get_input_voltage)(pl_psu* psu, float* volts);
  pl_status (*get_output_voltage)(pl_psu* psu, float* volts);
  pl_status (*get_input_power)(pl_psu* psu, float* watts);
  pl_status (*get_output_power)(pl_psu* psu, float* watts);
} pl_psu_ops;

/* Owned by the library, for the life of the process. */
struct pl_psu {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_psu_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_psu_ops, 72);
PL_FIELD_AT(pl_psu_ops, get_power_ok, 16);
PL_FIELD_AT(pl_psu_ops, get_output_power, 64);
PL_RECORD_LAYOUT(pl_psu);

/* See pl_system_init. */
PL_API pl_status pl_psu_init(const char* json);

/* As pl_fan_add, for a supply. */
PL_API pl_psu* pl_psu_add(const char* json);

PL_END_DECLS

#endif
