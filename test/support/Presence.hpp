// SPDX-License-Identifier: Apache-2.0
//
// What a host gets from a bay.
#pragma once

#include <cstdlib>
#include <string>
#include <utility>

#include "pl/pl_status.h"

namespace Doubles {

// The status, and the descriptor or "none".
using Presence = std::pair<pl_status, std::string>;

inline Presence presence(pl_status status, const std::string& descriptor = "none") {
  return {status, descriptor};
}

// Asks with `getPresence(char** descriptor)` and frees the descriptor, as a host does.
template <class GetPresence>
Presence presenceBy(GetPresence getPresence) {
  char* descriptor = nullptr;
  const pl_status status = getPresence(&descriptor);
  Presence got(status, descriptor != nullptr ? descriptor : "none");
  std::free(descriptor);
  return got;
}

}  // namespace Doubles
