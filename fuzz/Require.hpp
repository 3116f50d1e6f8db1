// SPDX-License-Identifier: Apache-2.0
//
// What a fuzz target demands.
#pragma once

#include <cstdio>
#include <cstdlib>

inline void require(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
  }
}
