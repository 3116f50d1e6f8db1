// SPDX-License-Identifier: Apache-2.0
//
// Where the two ends of a call run. A wake-up on another core can cost several times one on the
// same core, so two ways are compared only if both begin alike.
#pragma once

#include <sys/types.h>

namespace Bench {

enum class Cores { kOne, kAll };

// For this process and those it starts later.
void runOn(Cores cores);

// For all threads of another process.
void runOn(Cores cores, pid_t process);

}  // namespace Bench
