// SPDX-License-Identifier: Apache-2.0
//
// A board without hardware: the environment that makes the library simulate, a directory for its
// registers, and the texts of a small board with one PSoC.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace E2e {

constexpr unsigned kPsoc = 12;  // the "did" of the board's PSoC

// One controller, one bus, the PSoC labelled "PSoC"; `driver` is a JSON value, or empty for none.
std::string topology(const std::string& driver = R"("HalvorsaPsoc")");

// A device description; `driverArgs` are the members of a JSON object.
std::string description(const std::string& name, const std::string& driverArgs,
                        const std::string& driver = "HalvorsaPsoc", unsigned did = kPsoc);

// A fan of the PSoC: its id counts from 1 and is the number of its speed register, too.
std::string fan(int id, const std::string& furtherArgs = "");
std::string masterFan();  // fan 1, 10000 RPM at full duty, sets the duty of all

// The sensor that reads a temperature register.
std::string sensor(int reg);

// What a PSoC that has just been made holds: registers 0x20, 0x21, 0x22, 0x24, 0x25, 0x32, 0x40,
// 0x42 and 0x44.
constexpr const char* kFreshPsoc = "282727272688fe1ffe1fff56\n";

class Simulation : public testing::Test {
 protected:
  Simulation();
  ~Simulation() override;

  // A simulation file's path and what it holds now.
  std::string path(const std::string& file) const;
  std::string contents(const std::string& file) const;

  const std::filesystem::path directory_;
};

// The same, with the topology above loaded and the traces of that forgotten.
class Board : public Simulation {
 protected:
  Board();
};

}  // namespace E2e
