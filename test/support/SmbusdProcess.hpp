// SPDX-License-Identifier: Apache-2.0
//
// A real smbusd on a virtual board, in a process and a directory of its own. Needs no test
// framework: what goes wrong is thrown as std::runtime_error, with smbusd's log.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace Doubles {

class SmbusdProcess {
 public:
  // Starts with the text of its configuration, whose virtual board is "virtual-board.json", and
  // the text of that; points NIMBO_SMBUS_SOCKET at itself.
  SmbusdProcess(std::string_view configuration, std::string_view board);
  ~SmbusdProcess();
  SmbusdProcess(const SmbusdProcess&) = delete;
  SmbusdProcess& operator=(const SmbusdProcess&) = delete;

  void start();  // with a board as new; returns when it serves
  void stop();   // SIGTERM
  void kill();   // SIGKILL

  [[nodiscard]] pid_t pid() const { return pid_; }  // 0: not running
  [[nodiscard]] std::string log() const;

 private:
  void awaitReady(int notifications);
  void end(int signal);
  [[nodiscard]] std::string path(const char* name) const { return directory_ / name; }

  std::filesystem::path directory_;
  pid_t pid_ = 0;
};

}  // namespace Doubles
