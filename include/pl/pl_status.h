/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_status.h - the result of every call that can fail.
 *
 * A status is a signed integer. 0 is success; every other value is a failure, and unless a call
 * says otherwise its outputs are then untouched. A transceiver's presence query is the one call
 * whose good answers are 0 and 1 (see pl_xcvr.h).
 */
#ifndef PL_STATUS_H
#define PL_STATUS_H

#include "pl/pl_abi.h"

typedef int pl_status;

enum {
  /* The call did what it says. */
  PL_STATUS_OK = 0,
  /* A slot is empty. */
  PL_STATUS_EMPTY = 1,
  /* A fan stalled or faulted, or a supply is on but its power is not good. */
  PL_STATUS_FAULT = 2,
  /* The topology text is not JSON, or an LED setting is not one the driver has. */
  PL_STATUS_INVALID = 3,
  /* The access path failed: no connection to the SMBus service, a register that the simulation
   * does not hold, an unknown IPMI name, a block of the wrong length. */
  PL_STATUS_FAILED = 4,
  /* This board does not do that. */
  PL_STATUS_UNSUPPORTED = 5,
  /* The other side failed: the SMBus service reported a failure or gave a wrong number of
   * answers, a shell command failed, a tree could not be built, memory ran out. */
  PL_STATUS_REMOTE = 6
};

#endif
