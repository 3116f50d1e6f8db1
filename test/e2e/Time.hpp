// SPDX-License-Identifier: Apache-2.0
//
// Time that passes at once, for the library too: this process's clock_gettime() is the test's own.
#pragma once

#include <chrono>

namespace E2e {

// The monotonic clock is so much further from now on.
void letPass(std::chrono::seconds time);

}  // namespace E2e
