// SPDX-License-Identifier: Apache-2.0
//
// The plug-in's configuration file: which controllers there are and how they are read.
// docs/ipmi.md describes it for those who write one.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "ipmi/ToolOutput.hpp"

namespace IpmiPlugin {

struct Controller {
  std::string name;  // the HAM type by which device descriptions name it
  std::string host;  // empty: in-band
  uint16_t port;
  std::string accessFile;  // user and password in FreeIPMI's form; empty: in-band without one
  std::string driver;      // FreeIPMI's name of one; empty: it probes
  std::string device;      // the in-band driver's device file; empty: its own choice
  std::chrono::milliseconds interval;
  std::chrono::milliseconds fruInterval;
  std::chrono::milliseconds timeout;
  std::chrono::milliseconds staleAfter;
  std::vector<unsigned> fruDevices;  // empty: all, in one go
  std::vector<AirflowMark> airflow;
};

struct Configuration {
  std::string toolDirectory;   // where FreeIPMI's programs are
  std::string cacheDirectory;  // where they keep the controllers' sensor lists
  std::vector<Controller> controllers;
};

// Throws Config::FileError for what is wrong with the file, or with an access file that it names.
Configuration loadConfiguration(const std::string& path);

}  // namespace IpmiPlugin
