/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_smbus.h - raw SMBus access to one device (SMBus 3.0 section 6.5).
 *
 * Each call is one transaction, muxes on the device's path included, and blocks until the SMBus
 * service has answered. It is not repeated when it fails.
 */
#ifndef PL_SMBUS_H
#define PL_SMBUS_H

#include "pl/pl_status.h"

PL_BEGIN_DECLS

typedef struct pl_smbus pl_smbus;

/* The most bytes that an SMBus block carries through this API. */
enum { PL_SMBUS_BLOCK_MAX = 255 };

typedef struct pl_smbus_ops {
  uint64_t size;                                        /* 112 */
  pl_status (*quick_command)(pl_smbus* smbus, int bit); /* throws: not offered by this library */
  pl_status (*receive_byte)(pl_smbus* smbus, unsigned char* value);
  pl_status (*send_byte)(pl_smbus* smbus, unsigned char value);
  pl_status (*read_byte)(pl_smbus* smbus, unsigned char command, unsigned char* value);
  pl_status (*write_byte)(pl_smbus* smbus, unsigned char command, unsigned char value);
  /* Words have their low byte first on the bus. */
  pl_status (*read_word)(pl_smbus* smbus, unsigned char command, unsigned short* value);
  pl_status (*write_word)(pl_smbus* smbus, unsigned char command, unsigned short value);
  /* SMBus blocks carry their own count. block_read stores as many bytes as the device gave, and
   * their number in *length (0 on failure): the buffer must hold PL_SMBUS_BLOCK_MAX bytes. */
  pl_status (*block_read)(pl_smbus* smbus, unsigned char command, unsigned char* data,
                          unsigned int* length);
  pl_status (*block_write)(pl_smbus* smbus, unsigned char command, const unsigned char* data,
                           unsigned int length);
  /* I2C blocks carry no count. A read that answers with another number of bytes than asked for is
   * PL_STATUS_FAILED and stores nothing. */
  pl_status (*i2c_block_read)(pl_smbus* smbus, unsigned char command, unsigned char* data,
                              unsigned int length);
  pl_status (*i2c_block_write)(pl_smbus* smbus, unsigned char command, const unsigned char* data,
                               unsigned int length);
  pl_status (*process_call)(pl_smbus* smbus, unsigned char command, unsigned short value,
                            unsigned short* result);
  /* Throws: not offered by this library. */
  pl_status (*block_process_call)(pl_smbus* smbus, unsigned char command, const unsigned char* data,
                                  unsigned char length, unsigned char* result,
                                  unsigned char* resultLength);
} pl_smbus_ops;

/* Owned by the library, for the life of the process. */
struct pl_smbus {
  uint64_t host; /* the host's own; the library neither reads nor writes it */
  const pl_smbus_ops* ops;
  void* object; /* the library's */
};

PL_SIZE(pl_smbus_ops, 112);
PL_FIELD_AT(pl_smbus_ops, block_process_call, 104);
PL_RECORD_LAYOUT(pl_smbus);

/* See pl_system_init. */
PL_API pl_status pl_smbus_init(const char* json);

/*
 * A proxy for a device. `name` is either a device description (it begins with an opening brace;
 * `address` is then not used) or a name N that, with the address in hexadecimal, makes the label
 * of a topology device: N and 0x50 stand for the label "N<0x50>". Null on failure, with the reason
 * traced.
 */
PL_API pl_smbus* pl_smbus_add(const char* name, unsigned int address);

PL_END_DECLS

#endif
