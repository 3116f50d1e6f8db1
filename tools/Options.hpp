// SPDX-License-Identifier: Apache-2.0
//
// What the command line says for every command.
#pragma once

#include <string>
#include <vector>

#include "tools/Trace.hpp"

namespace Nimbo {

struct Options {
  std::string board;                 // empty: the installed one
  std::string driverLibrary;         // empty: the installed one
  std::vector<std::string> plugins;  // besides the board description's
  std::string simulationDirectory;   // empty: the library's own choice
  int traceLevel = Trace::kNothing;
  bool live = false;
  bool json = false;
};

// What the process ends with.
enum ExitCode : int {
  kAllFine = 0,
  kToolFailed = 1,    // board description, library, service: nothing could be done
  kUsage = 2,         // the command line
  kDeviceFailed = 3,  // done, but a device reported a failure
};

}  // namespace Nimbo
