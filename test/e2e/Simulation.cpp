// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/Simulation.hpp"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "test/e2e/Library.hpp"

namespace E2e {

namespace {

std::filesystem::path freshDirectory() {
  std::string name = testing::TempDir() + "nimbo-e2e-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    std::abort();
  }
  return name;
}

}  // namespace

std::string topology(const std::string& driver) {
  const std::string member = driver.empty() ? "" : R"("driver": )" + driver + ", ";
  return R"([{"type": "SCD", "ham": "NimboSmbus", "pci": 7, "accelerators": [{"id": 2, "busses": [
    {"id": 3, "devices": [{"did": )" +
         std::to_string(kPsoc) + R"(, "label": "PSoC", )" + member +
         R"("address": {"address": 80}}]}]}]}])";
}

std::string description(const std::string& name, const std::string& driverArgs,
                        const std::string& driver, unsigned did) {
  return R"({"name": ")" + name + R"(", "did": )" + std::to_string(did) + R"(, "driver": ")" +
         driver + R"(", "address": {"address": 80}, "driverArgs": {)" + driverArgs + "}}";
}

std::string fan(int id, const std::string& furtherArgs) {
  return description("psoc", R"("fanId": )" + std::to_string(id) + R"(, "maxRpm": 10000, )" +
                                 R"("registerOffset": )" + std::to_string(id - 1) + furtherArgs);
}

std::string masterFan() { return fan(1, R"(, "pwmMaster": true)"); }

std::string sensor(int reg) {
  return description("psoc", R"("sensorId": 1, "register": )" + std::to_string(reg));
}

Simulation::Simulation() : directory_(freshDirectory()) {
  ::setenv("SIMULATION_VMID", "", 1);
  ::setenv("NIMBOLIB_SIMDIR", directory_.c_str(), 1);
}

Simulation::~Simulation() { std::filesystem::remove_all(directory_); }

std::string Simulation::path(const std::string& file) const { return directory_ / file; }

std::string Simulation::contents(const std::string& file) const {
  std::ifstream in(directory_ / file);
  return {std::istreambuf_iterator<char>(in), {}};
}

Board::Board() { EXPECT_EQ(LIB(pl_system_init)(topology().c_str()), PL_STATUS_OK); }

}  // namespace E2e
