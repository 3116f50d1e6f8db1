// SPDX-License-Identifier: Apache-2.0
//
// Where the tool finds things, and the environment in which it lets the library run.
#pragma once

#include <string>

#include "tools/Options.hpp"

namespace Nimbo {

// The option, or the variable NIMBO_BOARD, or the board description installed beside the tool.
std::string boardPath(const Options& options);

// The option, or the variable NIMBO_LIBRARY, or the library's name for the dynamic linker.
std::string libraryPath(const Options& options);

// Chooses between hardware and simulation for the library, before it is loaded. In simulation the
// directory of the simulated registers must be one that can be written: the library stops the
// process otherwise, so LibraryError is thrown first.
void prepareEnvironment(const Options& options);

}  // namespace Nimbo
