// SPDX-License-Identifier: Apache-2.0
//
// Every callback of every kind of record, as rows that can be called: reads into a value that is
// thrown away, writes of a value that does no harm.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "pl/pl_status.h"
#include "tools/Kind.hpp"

namespace Bench {

// None: the slot is null.
using Answer = std::optional<pl_status>;

struct Callback {
  const char* name;
  bool reads;  // and so can be called again without doing anything
  Answer (*call)(Nimbo::Record record);
};

// The records that one list of a board description makes.
struct RecordKind {
  const char* key;  // of the list
  // What pl_X_add makes of a description; null when the library refuses it.
  Nimbo::Record (*add)(const Nimbo::Library& library, const std::string& description);
  std::span<const Callback> (*callbacks)(Nimbo::Record record);
};

// One row a list, in the order in which the tool shows them.
std::span<const RecordKind> recordKinds();

const RecordKind& fanKind();

// Of a pl_system. Call them last: they switch the board off.
std::span<const Callback> systemCallbacks();

}  // namespace Bench
