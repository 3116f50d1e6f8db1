// SPDX-License-Identifier: Apache-2.0
#include "Utils/Simulation.hpp"

#include <cstdlib>

namespace Utils {

int32_t isInSimulation = -1;

bool inSimulation() {
  if (isInSimulation < 0) {
    isInSimulation = std::getenv("SIMULATION_VMID") != nullptr ? 1 : 0;
  }
  return isInSimulation == 1;
}

}  // namespace Utils
