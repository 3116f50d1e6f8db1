// SPDX-License-Identifier: Apache-2.0
//
// The driver library beside what it cannot do without: the JSON reader, the system calls of one
// simulated access, an empty callback.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "Components/DeviceBase.hpp"
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"
#include "Ham/SimHam.hpp"
#include "Topology/Topology.hpp"
#include "Utils/Host.hpp"
#include "Utils/Json.hpp"
#include "bench/Compare.hpp"
#include "bench/Topology.hpp"
#include "pl/pl.h"

namespace {

// Simulated registers live here; the directory goes when the program ends.
class Simulation {
 public:
  Simulation() {
    if (::mkdtemp(directory_.data()) == nullptr) {
      throw std::runtime_error(directory_);
    }
    ::setenv("SIMULATION_VMID", "", 1);
    ::setenv("NIMBOLIB_SIMDIR", directory_.c_str(), 1);
  }
  ~Simulation() { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path(const std::string& file) const { return directory_ + "/" + file; }

 private:
  std::string directory_ = std::filesystem::temp_directory_path() / "nimbo-bench-XXXXXX";
};

const Simulation simulation;

void parse(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str());
  benchmark::DoNotOptimize(document.IsArray());
}

// Loading frees the tree that was there. The two texts differ, so that none is taken for the other.
void loadTopologyOf10000Devices(benchmark::State& state) {
  const std::string text = Bench::topologyOf(10'000, "HalvorsaPsoc");
  const std::string same = text + " ";
  bool odd = false;
  Bench::compare(
      state, 3, 1,
      [&] {
        benchmark::DoNotOptimize(
            Topology::loadTopology((odd = !odd) ? text.c_str() : same.c_str()));
      },
      [&] { parse(text); });
}
BENCHMARK(loadTopologyOf10000Devices)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(100);

// What one access to a simulation file takes from the system. Copies two digits.
void bareAccess(const std::string& path, size_t size, char* digits) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct flock lock {};
  lock.l_type = F_RDLCK;
  ::fcntl(fd, F_SETLKW, &lock);
  void* memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  std::memcpy(digits, static_cast<const char*>(memory) + 2, 2);
  ::munmap(memory, size);
  lock.l_type = F_UNLCK;
  ::fcntl(fd, F_SETLK, &lock);
  ::close(fd);
}

void simulatedGet8(benchmark::State& state) {
  Ham::SimHam ham;
  ham.setDriverName("HalvorsaPsoc", "get8");
  ham.setExpected(&Drivers::HalvorsaPsoc::values);
  const std::string path = simulation.path("HalvorsaPsoc-get8");
  const size_t size = std::filesystem::file_size(path) - 1;
  ham.addRead8(0x21);
  char digits[2];
  benchmark::DoNotOptimize(&digits[0]);
  Bench::compare(
      state, 1.3, 100, [&] { benchmark::DoNotOptimize(ham.get8(0)); },
      [&] { bareAccess(path, size, digits); });
}
BENCHMARK(simulatedGet8)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1000);

// A callback of the same shape as the one measured, with its traces and nothing else.
pl_status emptyCallback(pl_xcvr* xcvr, int* fault) {
  TRACE(4, "%s(%u)", "getTxFaultCallback", 1u);
  TRACE(5, "%s(): id=%hhu", "getSfpTxFault", static_cast<unsigned char>(1));
  benchmark::DoNotOptimize(xcvr);
  *fault = 0;
  return PL_STATUS_OK;
}

// A cage's signals are answered from the registers last polled.
void cachedCallback(benchmark::State& state) {
  if (pl_xcvr_init(Bench::topologyOf(1, "HalvQCPLD").c_str()) != PL_STATUS_OK) {
    throw std::runtime_error("pl_xcvr_init");
  }
  Component::DeviceBase::devices.clear();
  pl_xcvr* const cage =
      pl_xcvr_add(Bench::descriptionOf(1, "HalvQCPLD", R"("id": 1, "type": "sfp")").c_str());
  const auto measured = cage->ops->kind.sfp.get_tx_fault;
  auto* volatile base = &emptyCallback;
  int fault = 0;
  Bench::compare(
      state, 1.5, 10'000, [&] { benchmark::DoNotOptimize(measured(cage, &fault)); },
      [&] { benchmark::DoNotOptimize(base(cage, &fault)); });
}
BENCHMARK(cachedCallback)->Unit(benchmark::kNanosecond)->UseManualTime()->Iterations(200);

// Beside the bare parse of the descriptions. There is no aim; the device is the cheapest, so that
// what is measured is the road to it.
void add1000Devices(benchmark::State& state) {
  constexpr unsigned kDevices = 1000;
  if (pl_gpio_init(Bench::topologyOf(kDevices, "GpioDriver").c_str()) != PL_STATUS_OK) {
    throw std::runtime_error("pl_gpio_init");
  }
  std::vector<std::string> texts;
  for (unsigned did = 1; did <= kDevices; ++did) {
    texts.push_back(Bench::descriptionOf(did, "GpioDriver", R"("register": 5, "bitpos": 1)"));
  }
  Bench::compare(
      state, 0, 1,
      [&] {
        Component::DeviceBase::devices.clear();
        for (const std::string& text : texts) {
          benchmark::DoNotOptimize(pl_gpio_add(text.c_str()));
        }
      },
      [&] {
        for (const std::string& text : texts) {
          parse(text);
        }
      });
}
BENCHMARK(add1000Devices)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);

}  // namespace

BENCHMARK_MAIN();
