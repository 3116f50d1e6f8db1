// SPDX-License-Identifier: Apache-2.0
#include "bench/Affinity.hpp"

#include <sched.h>

#include <cerrno>
#include <filesystem>
#include <string>
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

// A thread that has ended meanwhile runs nowhere.
void runThreadOn(Cores cores, pid_t thread) {
  if (::sched_setaffinity(thread, sizeof(cpu_set_t), &setOf(cores)) != 0 && errno != ESRCH) {
    throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
  }
}

}  // namespace

void runOn(Cores cores) { runThreadOn(cores, 0); }

void runOn(Cores cores, pid_t process) {
  const std::filesystem::path tasks = "/proc/" + std::to_string(process) + "/task";
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    runThreadOn(cores, std::stoi(task.path().filename()));
  }
}

}  // namespace Bench
