/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_temp_sensor.h - temperature sensors.
 */
#ifndef PL_TEMP_SENSOR_H
#define PL_TEMP_SENSOR_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_temp_sensor pl_temp_sensor;

typedef struct pl_temp_sensor_ops {
  uint64_t size;          /* 24 */
  void (*reserved)(void); /* null */
  /* Degrees Celsius. */
  pl_status (*get_temperature)(pl_temp_sensor* sensor, float* celsius);
} pl_temp_sensor_ops;

/* Owned by the library, for the life of the process. */
struct pl_temp_sensor {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_temp_sensor_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_temp_sensor_ops, 24);
PL_FIELD_AT(pl_temp_sensor_ops, get_temperature, 16);
PL_RECORD_LAYOUT(pl_temp_sensor);

/* See pl_system_init. */
PL_API pl_status pl_temp_sensor_init(const char* json);

/* As pl_fan_add, for a sensor, with its two thresholds in degrees Celsius, which the library keeps
 * and does not act on. Failures of this call itself are silent: null without a trace of its own. */
PL_API pl_temp_sensor* pl_temp_sensor_add(const char* json, float alertThreshold,
                                          float criticalThreshold);

PL_END_DECLS

#endif
