// SPDX-License-Identifier: Apache-2.0
//
// Whether this process runs against simulated registers.
#pragma once

#include <cstdint>

namespace Utils {

// -1 until it is first asked for, then 1 or 0 for the life of the process.
extern int32_t isInSimulation;

// True when the environment variable SIMULATION_VMID is set, to whatever value. Asked once.
bool inSimulation();

}  // namespace Utils
