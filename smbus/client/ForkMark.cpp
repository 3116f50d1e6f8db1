// SPDX-License-Identifier: Apache-2.0
#include "smbus/client/ForkMark.hpp"

#include <pthread.h>

namespace PlatformLibrary {

namespace {

uint64_t mark = 1;

const int registered = ::pthread_atfork(nullptr, nullptr, [] { ++mark; });

}  // namespace

uint64_t forkMark() { return mark; }

}  // namespace PlatformLibrary
