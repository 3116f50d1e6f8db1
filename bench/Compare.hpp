// SPDX-License-Identifier: Apache-2.0
//
// Measures a thing beside what it cannot do without, in turns in one run, so that a slow or busy
// machine slows both. Times are of the processor, since neither waits for anything. The ratio of
// the medians is what counts; it is printed with the aim.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace Bench {

inline double processorSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Seconds that one call takes, of `calls` in a row.
template <class Call>
double secondsOf(int calls, Call& call) {
  const double begin = processorSeconds();
  for (int i = 0; i < calls; ++i) {
    call();
  }
  return (processorSeconds() - begin) / calls;
}

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Each iteration of `state` makes `calls` calls of either. The benchmark must use manual time.
template <class Measured, class Base>
void compare(benchmark::State& state, double aim, int calls, Measured measured, Base base) {
  std::vector<double> measuredTimes;
  std::vector<double> baseTimes;
  for (auto _ : state) {
    measuredTimes.push_back(secondsOf(calls, measured));
    baseTimes.push_back(secondsOf(calls, base));
    state.SetIterationTime(measuredTimes.back());
  }
  state.counters["base_us"] = median(baseTimes) * 1e6;
  state.counters["measured_us"] = median(measuredTimes) * 1e6;
  state.counters["ratio"] = median(measuredTimes) / median(baseTimes);
  state.counters["aim"] = aim;
}

}  // namespace Bench
