// SPDX-License-Identifier: Apache-2.0
#include "bench/Comparison.hpp"

#include <algorithm>

namespace Bench {

namespace {

std::chrono::nanoseconds median(Times times, int callsOfATurn) {
  times.erase(times.begin(), times.begin() + callsOfATurn);
  const auto middle = times.begin() + static_cast<Times::difference_type>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

}  // namespace

Comparison medians(Times first, Times second, int callsOfATurn) {
  return {median(std::move(first), callsOfATurn), median(std::move(second), callsOfATurn)};
}

}  // namespace Bench
