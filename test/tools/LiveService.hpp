// SPDX-License-Identifier: Apache-2.0
//
// The built smbusd, for tests of the tool over the production path.
#pragma once

#include <string>
#include <vector>

#include "test/tools/Process.hpp"

namespace TestSupport {

// Runs until it is stopped or destroyed; the constructor returns when clients can come in.
class LiveService {
 public:
  LiveService(const std::string& socket, std::vector<std::string> options);

  void signal(int number) const { process_.signal(number); }
  // Ends it by SIGTERM.
  Result stop();

 private:
  Process process_;
};

}  // namespace TestSupport
