// SPDX-License-Identifier: Apache-2.0
//
// Where the two ends of a call run. A wake-up on another core can cost several times one on the
// same core, so two ways are compared on one.
#pragma once

namespace Bench {

enum class Cores { kOne, kAll };

// For this thread, and the threads and processes that it starts later.
void runOn(Cores cores);

}  // namespace Bench
