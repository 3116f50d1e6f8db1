/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_gpio.h - single GPIO lines and register bits.
 */
#ifndef PL_GPIO_H
#define PL_GPIO_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_gpio pl_gpio;

typedef struct pl_gpio_ops {
  uint64_t size; /* 32 */
  pl_status (*bit_set)(pl_gpio* gpio);
  pl_status (*bit_clear)(pl_gpio* gpio);
  pl_status (*bit_read)(pl_gpio* gpio, unsigned int* level); /* 0 or 1 */
} pl_gpio_ops;

/* Owned by the library, for the life of the process. */
struct pl_gpio {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_gpio_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_gpio_ops, 32);
PL_RECORD_LAYOUT(pl_gpio);

/* See pl_system_init. */
PL_API pl_status pl_gpio_init(const char* json);

/* As pl_fan_add, for a line. Failures of this call itself are silent: null without a trace of its
 * own. */
PL_API pl_gpio* pl_gpio_add(const char* json);

PL_END_DECLS

#endif
