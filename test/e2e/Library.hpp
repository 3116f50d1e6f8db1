// SPDX-License-Identifier: Apache-2.0
//
// The built library, reached as a host reaches it: loaded by path, its functions found by name.
#pragma once

#include "pl/pl.h"

namespace E2e {

// The environment variable NIMBO_LIBRARY, or the library of this build.
const char* libraryPath();

// The address of an exported function. Ends the process with the loader's reason if there is none.
void* symbol(const char* name);

}  // namespace E2e

// One of the library's functions: LIB(pl_fan_add)(text).
#define LIB(name) reinterpret_cast<decltype(&::name)>(::E2e::symbol(#name))
