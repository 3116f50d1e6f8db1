/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_xcvr.h - transceiver cages, SFP (SFF-8431) and QSFP (SFF-8436).
 *
 * Values of the signals are 1 when the thing named is so and 0 when not, whatever the pin's level.
 */
#ifndef PL_XCVR_H
#define PL_XCVR_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_xcvr pl_xcvr;

enum { PL_XCVR_SFP = 0, PL_XCVR_QSFP = 1 };

typedef struct pl_sfp_ops {
  uint64_t size; /* 48: this part's own size */
  /* 1 when a module is in the cage and 0 when none is. A failure's status is returned in the same
   * number, so a failed access that gives 1 cannot be told from a module; this is the interface. */
  pl_status (*get_presence)(pl_xcvr* xcvr);
  pl_status (*get_tx_fault)(pl_xcvr* xcvr, int* fault);
  pl_status (*get_rx_los)(pl_xcvr* xcvr, int* loss);
  pl_status (*get_tx_disable)(pl_xcvr* xcvr, int* disabled);
  pl_status (*set_tx_disable)(pl_xcvr* xcvr, int disable);
} pl_sfp_ops;

typedef struct pl_qsfp_ops {
  uint64_t size;                            /* 72: this part's own size */
  pl_status (*get_presence)(pl_xcvr* xcvr); /* as for SFP */
  pl_status (*get_mod_sel)(pl_xcvr* xcvr, int* selected);
  pl_status (*set_mod_sel)(pl_xcvr* xcvr, int select);
  pl_status (*get_lp_mode)(pl_xcvr* xcvr, int* low);
  pl_status (*set_lp_mode)(pl_xcvr* xcvr, int low);
  pl_status (*get_reset)(pl_xcvr* xcvr, int* reset);
  pl_status (*set_reset)(pl_xcvr* xcvr, int reset);
  pl_status (*get_interrupt)(pl_xcvr* xcvr, int* interrupt);
} pl_qsfp_ops;

/* One record for both kinds; `type` says which part counts. The space that the SFP part leaves
 * holds zeros. */
typedef struct pl_xcvr_ops {
  uint32_t size; /* 80 */
  uint32_t type; /* PL_XCVR_SFP or PL_XCVR_QSFP */
  union {
    pl_sfp_ops sfp;
    pl_qsfp_ops qsfp;
  } kind;
} pl_xcvr_ops;

/* Owned by the library, for the life of the process. */
struct pl_xcvr {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_xcvr_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_sfp_ops, 48);
PL_SIZE(pl_qsfp_ops, 72);
PL_SIZE(pl_xcvr_ops, 80);
PL_FIELD_AT(pl_xcvr_ops, type, 4);
PL_FIELD_AT(pl_xcvr_ops, kind, 8);
PL_RECORD_LAYOUT(pl_xcvr);

/* See pl_system_init. */
PL_API pl_status pl_xcvr_init(const char* json);

/* As pl_fan_add, for a cage. The description's driver arguments must hold "id", the port's number,
 * and "type", one of "sfp", "sfp+", "qsfp", "qsfp+". */
PL_API pl_xcvr* pl_xcvr_add(const char* json);

PL_END_DECLS

#endif
