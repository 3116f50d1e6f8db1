/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_led.h - status LEDs.
 */
#ifndef PL_LED_H
#define PL_LED_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

/* What an LED is to say. How it says it (colour, blinking) is its driver's. */
typedef int pl_led_status;

enum {
  PL_LED_OFF = 0,
  PL_LED_GOOD = 1,
  PL_LED_WARNING = 2,
  PL_LED_BAD = 3,
  PL_LED_INACTIVE = 4,
  PL_LED_UNKNOWN = 5,
  PL_LED_BEACON = 6 /* blinks, one second on and one off, in step with every other beacon */
};

typedef struct pl_led pl_led;

typedef struct pl_led_ops {
  uint64_t size; /* 16 */
  /* PL_STATUS_INVALID for a setting that the driver does not have. */
  pl_status (*set_light_setting)(pl_led* led, pl_led_status status);
} pl_led_ops;

/* Owned by the library, for the life of the process. */
struct pl_led {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_led_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_led_ops, 16);
PL_RECORD_LAYOUT(pl_led);

/* See pl_system_init. */
PL_API pl_status pl_led_init(const char* json);

/* As pl_fan_add, for an LED. */
PL_API pl_led* pl_led_add(const char* json);

PL_END_DECLS

#endif
