// SPDX-License-Identifier: Apache-2.0
//
// Runs the built tool with the built library, away from whatever the machine's environment says.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "test/tools/Process.hpp"

namespace TestSupport {

class NimboFixture : public testing::Test {
 protected:
  NimboFixture() {
    std::string name = std::filesystem::temp_directory_path() / "nimbo-XXXXXX";
    directory_ = ::mkdtemp(name.data());
  }
  ~NimboFixture() override { std::filesystem::remove_all(directory_); }

  std::string socket() const { return directory_ + "/smbus.sock"; }

  // Simulated registers and the service's socket in the test's directory; the rest as installed.
  std::map<std::string, std::string> environment() const {
    return {{"NIMBOLIB_SIMDIR", directory_},
            {"NIMBO_BOARD", ""},
            {"NIMBO_LIBRARY", ""},
            {"SIMULATION_VMID", ""},
            {"NIMBO_SMBUS_SOCKET", socket()}};
  }

  static std::vector<std::string> command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), NIMBO_TOOL);
    return arguments;
  }

  Result nimbo(const std::vector<std::string>& arguments) const {
    return run(command(arguments), environment());
  }

  std::string directory_;
};

inline rapidjson::Document parsed(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str());
  EXPECT_FALSE(document.HasParseError()) << text;
  return document;
}

}  // namespace TestSupport
