// SPDX-License-Identifier: Apache-2.0
//
// A program run by a test, with its output.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace TestSupport {

struct Result {
  int code = -1;  // the exit code, or -1 for an end by a signal
  std::string out;
  std::string err;
};

// Runs until it ends or is destroyed (then it is killed). Standard output is read line by line,
// standard error goes to a file.
class Process {
 public:
  // `environment` is added to the test's own; an empty value removes a variable.
  Process(const std::vector<std::string>& command,
          const std::map<std::string, std::string>& environment);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // The next line without its end; false at the end of the output.
  bool readLine(std::string& line);

  void signal(int number) const;

  // True while the process takes signals by other means than their delivery.
  bool blocksSignals() const;

  // Reads the rest of the output and waits for the end.
  Result finish();

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
  std::string pending_;
};

Result run(const std::vector<std::string>& command,
           const std::map<std::string, std::string>& environment);

}  // namespace TestSupport
