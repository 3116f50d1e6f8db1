// SPDX-License-Identifier: Apache-2.0
//
// Reads a controller with FreeIPMI's programs, each look in processes of its own. FreeIPMI is under
// the GPL and is therefore run and never linked; and whatever a controller does to its client, it
// does to a process that can be killed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ipmi/Clock.hpp"
#include "ipmi/Configuration.hpp"
#include "ipmi/Reading.hpp"
#include "ipmi/ToolRun.hpp"

namespace IpmiPlugin {

class FreeIpmiReader : public Reader {
 public:
  FreeIpmiReader(Controller controller, const Configuration& configuration, Clock clock);

  // The sensors, and the FRU records when those known are older than "fruInterval" or the look
  // before this one has failed.
  Reading read(const Stop& stop) override;

 private:
  std::vector<std::string> command(const char* tool) const;
  std::map<std::string, std::string> readSensors(const Stop& stop);
  std::map<std::string, Fru> readFrus(const Stop& stop);
  std::string fruText(const std::vector<std::string>& further, const Stop& stop);
  bool frusAreDue() const;

  const Controller controller_;
  const std::string toolDirectory_;
  const std::string cacheDirectory_;
  const Clock clock_;
  ToolRunner runner_;
  std::map<std::string, Fru> frus_;
  std::optional<TimePoint> frusRead_;  // when; empty: they must be read
};

}  // namespace IpmiPlugin
