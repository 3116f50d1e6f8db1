/* SPDX-License-Identifier: Apache-2.0
 *
 * pl_abi.h - what every host header builds on: the export mark and the layout check.
 *
 * All records of this API are plain C structures in the platform's own alignment (LP64: 8-byte
 * pointers and words, x86-64 and arm64). Their sizes and offsets are part of the contract; each
 * header states them with PL_LAYOUT, so that a compiler that lays them out otherwise stops.
 */
#ifndef PL_ABI_H
#define PL_ABI_H

#include <stddef.h>
#include <stdint.h>

/* Marks what crosses the library's border, in either direction. All else stays hidden. */
#define PL_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define PL_LAYOUT(condition, text) static_assert(condition, text)
#define PL_BEGIN_DECLS extern "C" {
#define PL_END_DECLS }
#else
#define PL_LAYOUT(condition, text) _Static_assert(condition, text)
#define PL_BEGIN_DECLS
#define PL_END_DECLS
#endif

/* A field of a record stands at `at`; a record is `bytes` long. */
#define PL_FIELD_AT(record, field, at) \
  PL_LAYOUT(offsetof(record, field) == (at), #record "." #field " stands at byte " #at)
#define PL_SIZE(record, bytes) PL_LAYOUT(sizeof(record) == (bytes), #record " has " #bytes " bytes")

/* The three words with which every record except pl_system begins. */
#define PL_RECORD_LAYOUT(record)   \
  PL_FIELD_AT(record, host, 0);    \
  PL_FIELD_AT(record, ops, 8);     \
  PL_FIELD_AT(record, object, 16); \
  PL_SIZE(record, 24)

#endif
