// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/Time.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace E2e {

namespace {

std::atomic<std::chrono::seconds::rep> passed{0};

}  // namespace

void letPass(std::chrono::seconds time) { passed += time.count(); }

}  // namespace E2e

// The loader finds this one before the system's.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* now) noexcept {
  const auto status = static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
  if (status == 0 && clock == CLOCK_MONOTONIC) {
    now->tv_sec += E2e::passed;
  }
  return status;
}
