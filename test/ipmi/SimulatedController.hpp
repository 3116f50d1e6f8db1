// SPDX-License-Identifier: Apache-2.0
//
// A management controller: ipmi_sim in a process and a directory of its own, on a free port of the
// loopback. Needs no test framework: what goes wrong is thrown as std::runtime_error.
//
//   sensor      what it measures
//   FAN1        5400 rpm
//   FAN2        6000 rpm, while FAN2_PRS has its first state, "present"
//   FAN2_PRS    presence of fan 2
//   Inlet Temp  42 degrees
//   PSU1_OK     state of a power supply, "present"
// FRU devices: "Fan tray" (part FT-1-R, serial FT0001), "PSU1" (part PS-460-F, serial PS0001)
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "test/ipmi/Directory.hpp"

namespace Doubles {

class SimulatedController {
 public:
  SimulatedController();
  ~SimulatedController();
  SimulatedController(const SimulatedController&) = delete;
  SimulatedController& operator=(const SimulatedController&) = delete;

  [[nodiscard]] uint16_t port() const { return port_; }
  // User and password, in FreeIPMI's form.
  [[nodiscard]] std::string accessFile() const { return directory_.path("access"); }

  // What a sensor measures next.
  void setFan1Rpm(int rpm) { directory_.write("fan1", std::to_string(rpm)); }
  void setFan2Present(bool present) { directory_.write("fan2-present", present ? "1" : "0"); }

  void start();
  void kill();
  void signal(int number) const;  // SIGSTOP and SIGCONT

 private:
  void writeConfiguration();
  void writeCommands();

  Directory directory_;
  uint16_t port_;
  pid_t pid_ = 0;
};

}  // namespace Doubles
