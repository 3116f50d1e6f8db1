// SPDX-License-Identifier: Apache-2.0
//
// The simulated board with a host that remembers what was traced (test/support/Host.hpp).
#pragma once

#include "test/e2e/Simulation.hpp"
#include "test/support/Host.hpp"

namespace E2e {

using Trace = std::vector<Doubles::Trace>;

// What was traced since the last call; of one level, the texts.
Trace takeTrace();
std::vector<std::string> takeTexts(int level);

// Lets the one timer fire.
void fireTimer();

// Its topology is loaded, and the traces of that are forgotten.
class TracedBoard : public Board {
 protected:
  TracedBoard() { takeTrace(); }
};

}  // namespace E2e
