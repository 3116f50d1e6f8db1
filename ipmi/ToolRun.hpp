// SPDX-License-Identifier: Apache-2.0
//
// A program run to its end, within bounds of time and output: one that hangs is killed.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "ipmi/Stop.hpp"

namespace IpmiPlugin {

struct ToolResult {
  int exitCode;  // -1: ended by a signal
  std::string out;
  std::string err;
};

class ToolRunner {
 public:
  static constexpr size_t kMostOutput = 1 << 20;  // bytes, of each of the two outputs

  // `limit` is the longest that a program may run.
  explicit ToolRunner(std::chrono::milliseconds limit) : limit_(limit) {}

  // Runs command[0], an absolute path, with nothing on its standard input, no descriptors of this
  // process, the C locale and no other environment. Throws ReadError when it cannot be started,
  // exceeds a bound or is stopped; it is then dead, unless the kernel holds it in a call.
  ToolResult run(const std::vector<std::string>& command, const Stop& stop);

 private:
  class Child;

  void reapLateOnes();

  const std::chrono::milliseconds limit_;
  std::vector<pid_t> late_;  // killed, and not yet dead
};

}  // namespace IpmiPlugin
