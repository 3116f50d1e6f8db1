// SPDX-License-Identifier: Apache-2.0
//
// Tells a process from the children that fork() makes of it, without asking the kernel each time.
#pragma once

#include <cstdint>

namespace PlatformLibrary {

// Never 0; the same until a fork(), and another one in the child.
[[nodiscard]] uint64_t forkMark();

}  // namespace PlatformLibrary
