// SPDX-License-Identifier: Apache-2.0
//
// Two ways of doing something, measured in turns, so that whatever else the machine does meets
// both. Only their ratio says something; the times themselves are this machine's and this minute's.
#pragma once

#include <chrono>
#include <vector>

namespace Bench {

using Times = std::vector<std::chrono::nanoseconds>;

// Medians of one call.
struct Comparison {
  std::chrono::duration<double, std::micro> first;
  std::chrono::duration<double, std::micro> second;
};

struct Effort {
  int rounds;  // of one turn each
  int calls;   // of a turn
};

template <class Way>
void takeTurn(Way& way, int calls, Times& times) {
  for (int call = 0; call < calls; ++call) {
    const auto start = std::chrono::steady_clock::now();
    way();
    times.push_back(std::chrono::steady_clock::now() - start);
  }
}

// Of two ways' times; the first turn of each is thrown away.
[[nodiscard]] Comparison medians(Times first, Times second, int callsOfATurn);

template <class First, class Second>
[[nodiscard]] Comparison compare(First first, Second second, Effort effort) {
  Times firstTimes;
  Times secondTimes;
  for (int round = 0; round <= effort.rounds; ++round) {
    takeTurn(first, effort.calls, firstTimes);
    takeTurn(second, effort.calls, secondTimes);
  }
  return medians(std::move(firstTimes), std::move(secondTimes), effort.calls);
}

}  // namespace Bench
