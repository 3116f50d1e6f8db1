// SPDX-License-Identifier: Apache-2.0
#include "tools/Environment.hpp"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "tools/Library.hpp"

namespace Nimbo {

namespace {

constexpr const char* kLibraryName = "libNimboDriversHalvorsa.so.0";
constexpr const char* kSimulation = "SIMULATION_VMID";
constexpr const char* kSimulationDirectory = "NIMBOLIB_SIMDIR";
constexpr const char* kDefaultSimulationDirectory = "/tmp/NimboSimulationDevices";

std::string firstOf(const std::string& option, const char* variable, const std::string& otherwise) {
  const char* const value = std::getenv(variable);
  return !option.empty() ? option : value != nullptr && *value != '\0' ? value : otherwise;
}

void requireWritable(const char* directory) {
  if (::mkdir(directory, 0755) != 0 && errno != EEXIST) {
    throw LibraryError(
        fmt::format("the simulation directory {} cannot be made: {} (--simdir names "
                    "another)",
                    directory, std::generic_category().message(errno)));
  }
  if (::access(directory, W_OK | X_OK) != 0) {
    throw LibraryError(
        fmt::format("the simulation directory {} cannot be written: {} (--simdir "
                    "names another)",
                    directory, std::generic_category().message(errno)));
  }
}

}  // namespace

std::string boardPath(const Options& options) {
  std::error_code error;
  const auto tool = std::filesystem::read_symlink("/proc/self/exe", error);
  return firstOf(options.board, "NIMBO_BOARD",
                 (tool.parent_path() / NIMBO_BOARD_FROM_TOOL).lexically_normal());
}

std::string libraryPath(const Options& options) {
  return firstOf(options.driverLibrary, "NIMBO_LIBRARY", kLibraryName);
}

void prepareEnvironment(const Options& options) {
  if (options.live) {
    ::unsetenv(kSimulation);
    return;
  }
  ::setenv(kSimulation, "1", 0);
  if (!options.simulationDirectory.empty()) {
    ::setenv(kSimulationDirectory, options.simulationDirectory.c_str(), 1);
  }
  const char* const directory = std::getenv(kSimulationDirectory);
  requireWritable(directory == nullptr ? kDefaultSimulationDirectory : directory);
}

}  // namespace Nimbo
