// SPDX-License-Identifier: Apache-2.0
//
// Memory that runs out on order: strdup() of a target that is linked with --wrap=strdup. Include it
// in one source of the target.
#pragma once

namespace Doubles {

inline bool outOfMemory = false;

}  // namespace Doubles

extern "C" {
char* __real_strdup(const char* text);
char* __wrap_strdup(const char* text) {
  return Doubles::outOfMemory ? nullptr : __real_strdup(text);
}
}
