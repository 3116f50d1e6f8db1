// SPDX-License-Identifier: Apache-2.0
#include "bench/Affinity.hpp"

#include <sched.h>

#include <cerrno>
#include <system_error>

namespace Bench {

namespace {

cpu_set_t coresAtStart() {
  cpu_set_t set;
  CPU_ZERO(&set);
  ::sched_getaffinity(0, sizeof set, &set);
  return set;
}

cpu_set_t firstOf(const cpu_set_t& all) {
  cpu_set_t one;
  CPU_ZERO(&one);
  for (size_t core = 0; core < CPU_SETSIZE; ++core) {
    if (CPU_ISSET(core, &all)) {
      CPU_SET(core, &one);
      break;
    }
  }
  return one;
}

const cpu_set_t& setOf(Cores cores) {
  static const cpu_set_t all = coresAtStart();
  static const cpu_set_t one = firstOf(all);
  return cores == Cores::kOne ? one : all;
}

}  // namespace

void runOn(Cores cores) {
  if (::sched_setaffinity(0, sizeof(cpu_set_t), &setOf(cores)) != 0) {
    throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
  }
}

}  // namespace Bench
