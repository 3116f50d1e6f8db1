/* SPDX-License-Identifier: Apache-2.0
 *
 * pl.h - the whole host API of the Halvorsa board's driver library.
 *
 * A host defines the services of pl_host.h, calls one pl_X_init with the board's topology, and then
 * pl_X_add once for every device that it manages. From then on it talks to a device through the
 * record it was given: record->ops->call(record, ...). Before it uses a slot of an operations
 * record a host checks that the record is long enough (`size`) and that the slot is not null.
 *
 * Configuration that cannot be right (a key that is missing, a number out of range) stops the
 * process with a message of the form "file:line: function: Assertion `text' failed.", on purpose;
 * what can go wrong while the board runs is a status. Some misuse of the API throws a C++
 * exception derived from std::exception; the headers say where.
 */
#ifndef PL_H
#define PL_H

#include "pl/pl_fan.h"
#include "pl/pl_gpio.h"
#include "pl/pl_host.h"
#include "pl/pl_led.h"
#include "pl/pl_psu.h"
#include "pl/pl_slot.h"
#include "pl/pl_smbus.h"
#include "pl/pl_status.h"
#include "pl/pl_system.h"
#include "pl/pl_temp_sensor.h"
#include "pl/pl_xcvr.h"

#endif
