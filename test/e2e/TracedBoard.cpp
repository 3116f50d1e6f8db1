// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/TracedBoard.hpp"

#include <utility>

namespace E2e {

Trace takeTrace() { return std::exchange(Doubles::host().traces, {}); }

std::vector<std::string> takeTexts(int level) {
  std::vector<std::string> texts = Doubles::host().texts(level);
  takeTrace();
  return texts;
}

void fireTimer() { Doubles::host().fire(Doubles::host().timer()); }

}  // namespace E2e
