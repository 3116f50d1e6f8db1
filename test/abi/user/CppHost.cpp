// SPDX-License-Identifier: Apache-2.0
//
// A small host in C++: reads one fan of a simulated board. Its one argument is the library's path.
#include <dlfcn.h>
#include <pl/pl.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

pl_timer_handle pl_timer_add(pl_timer_callback, void*) { return 1; }
int pl_timer_set(pl_timer_handle, uint32_t) { return 0; }

namespace {

constexpr const char* kTopology = R"([{"type": "PLM", "ham": "NimboSmbus", "id": 1, "devices": [
  {"did": 3, "driver": null, "address": {"address": 80}}]}])";
constexpr const char* kFan = R"({"name": "psoc", "did": 3, "driver": "HalvorsaPsoc",
  "address": {"address": 80},
  "driverArgs": {"fanId": 2, "maxRpm": 23000, "registerOffset": 1}})";

void require(bool condition, const char* what) {
  if (!condition) {
    throw std::runtime_error(what);
  }
}

template <class Function>
Function function(void* library, const char* name) {
  void* const address = ::dlsym(library, name);
  require(address != nullptr, name);
  return reinterpret_cast<Function>(address);
}

void readOneFan(void* library) {
  require(function<decltype(&pl_fan_init)>(library, "pl_fan_init")(kTopology) == PL_STATUS_OK,
          "pl_fan_init");
  pl_fan* const fan = function<decltype(&pl_fan_add)>(library, "pl_fan_add")(kFan);
  require(fan != nullptr, "pl_fan_add");
  int rpm = 0;
  require(fan->ops->get_rpm(fan, &rpm) == PL_STATUS_OK && rpm == 8190, "get_rpm");
}

// What the library throws passes through its C border, for those who want to catch it.
void askForASupply(void* library) {
  try {
    function<decltype(&pl_psu_add)>(library, "pl_psu_add")(kFan);
  } catch (const std::exception& error) {
    require(std::string(error.what()) == "Not implemented newPsu", error.what());
    return;
  }
  throw std::runtime_error("a PSoC is no supply");
}

}  // namespace

int main(int, char** argv) {
  std::string directory = std::filesystem::temp_directory_path() / "nimbo-cpp-host-XXXXXX";
  int result = EXIT_SUCCESS;
  try {
    require(::mkdtemp(directory.data()) != nullptr, "mkdtemp");
    ::setenv("SIMULATION_VMID", "1", 1);
    ::setenv("NIMBOLIB_SIMDIR", directory.c_str(), 1);
    void* const library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    require(library != nullptr, ::dlerror());
    readOneFan(library);
    askForASupply(library);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "failed: %s\n", error.what());
    result = EXIT_FAILURE;
  }
  std::filesystem::remove_all(directory);
  return result;
}
