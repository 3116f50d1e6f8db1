// SPDX-License-Identifier: Apache-2.0
#include "Nimbo.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "NimboUtil/PLSocket.hpp"
#include "Topology/Topology.hpp"
#include "pl/pl.h"
#include "test/support/Check.hpp"
#include "test/support/Host.hpp"

namespace {

using Doubles::host;
using Doubles::Trace;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// The pauses between attempts, and what happens in the n-th of them.
std::vector<unsigned> pauses;
std::function<void(size_t)> duringPause;

}  // namespace

// Stands before the C library's: nobody waits here.
extern "C" unsigned sleep(unsigned seconds) {
  pauses.push_back(seconds);
  if (duringPause) {
    duringPause(pauses.size());
  }
  return 0;
}

namespace {

// A service that takes connections at a path and never answers.
class Listener {
 public:
  explicit Listener(const std::string& path)
      : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(fd_, 8), 0);
  }
  ~Listener() { ::close(fd_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  // How many connections have come since the last call.
  int accepted() {
    int count = 0;
    for (int fd = ::accept(fd_, nullptr, nullptr); fd >= 0; fd = ::accept(fd_, nullptr, nullptr)) {
      ++count;
      connections_.push_back(fd);
    }
    return count;
  }

 private:
  int fd_;
  std::vector<int> connections_;  // left to the process's end
};

class StartUp : public testing::Test {
 protected:
  StartUp() {
    std::string name = testing::TempDir() + "NimboTest.XXXXXX";
    directory_ = ::mkdtemp(name.data());
    path_ = directory_ / "smbus.sock";
    ::setenv("NIMBO_SMBUS_SOCKET", path_.c_str(), 1);
    ::unsetenv("SIMULATION_VMID");
  }
  ~StartUp() override { std::filesystem::remove_all(directory_); }

  static size_t openFiles() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
  }

  std::filesystem::path directory_;
  std::string path_;
};

TEST_F(StartUp, ConnectsAndLoadsTheTopology) {
  Listener listener(path_);
  EXPECT_EQ(nimboLibraryInit("pl_fan_init", "[]", 30), PL_STATUS_OK);
  EXPECT_NE(_plSock, nullptr);
  EXPECT_NE(Topology::_topology, nullptr);
  EXPECT_EQ(listener.accepted(), 1);
  EXPECT_THAT(pauses, IsEmpty());
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "pl_fan_init"}, Trace{5, "pl_fan_init: json = []"},
                          Trace{2, "loading topology json"}));
}

TEST_F(StartUp, MakesNoAttemptWithoutRetries) {
  Listener listener(path_);
  for (const int retries : {0, -1}) {
    EXPECT_EQ(nimboLibraryInit("pl_fan_init", "[]", retries), PL_STATUS_FAILED);
  }
  EXPECT_EQ(listener.accepted(), 0);
  EXPECT_EQ(_plSock, nullptr);
  EXPECT_EQ(Topology::_topology, nullptr);
  EXPECT_THAT(pauses, IsEmpty());
  EXPECT_THAT(host().texts(0), ElementsAre("pl_fan_init", "pl_fan_init: socket Setup failed!",
                                           "pl_fan_init", "pl_fan_init: socket Setup failed!"));
}

TEST_F(StartUp, PausesASecondAfterEachFailedAttempt) {
  std::unique_ptr<Listener> listener;
  duringPause = [&](size_t pause) {
    if (pause == 2) {
      listener = std::make_unique<Listener>(path_);
    }
  };
  EXPECT_EQ(nimboLibraryInit("pl_fan_init", "[1", 30), PL_STATUS_INVALID);
  EXPECT_THAT(pauses, ElementsAre(1u, 1u));
  EXPECT_NE(_plSock, nullptr);
  EXPECT_EQ(listener->accepted(), 1);
}

TEST_F(StartUp, GivesUpAfterTheLastPause) {
  const size_t open = openFiles();
  EXPECT_EQ(plSockInit("pl_led_init", 30), PL_STATUS_FAILED);
  EXPECT_THAT(pauses, SizeIs(30));
  EXPECT_THAT(pauses, Each(1u));
  EXPECT_EQ(_plSock, nullptr);
  EXPECT_EQ(openFiles(), open);
  EXPECT_THAT(host().deletedWatchers, IsEmpty());
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "pl_led_init: socket Setup failed!"}));
}

TEST_F(StartUp, StartsOverAfterAFailure) {
  EXPECT_EQ(plSockInit("first", 1), PL_STATUS_FAILED);
  Listener listener(path_);
  EXPECT_EQ(plSockInit("second", 1), PL_STATUS_OK);
  EXPECT_NE(_plSock, nullptr);
  EXPECT_EQ(listener.accepted(), 1);
}

TEST_F(StartUp, ConnectsOnce) {
  Listener listener(path_);
  ASSERT_EQ(pl_fan_init("[]"), PL_STATUS_OK);
  const auto* socket = _plSock;
  const auto* topology = Topology::_topology;
  EXPECT_EQ(pl_fan_init("[]"), PL_STATUS_OK);
  EXPECT_EQ(nimboLibraryInit("any", "[]", 0), PL_STATUS_OK);
  EXPECT_EQ(_plSock, socket);
  EXPECT_EQ(Topology::_topology, topology);
  EXPECT_EQ(listener.accepted(), 1);
  EXPECT_TRUE(host().traced(2, "topology is the same as the previously loaded one (using it)"));
}

TEST_F(StartUp, KeepsTheSocketWhenTheTopologyIsNotJson) {
  Listener listener(path_);
  EXPECT_EQ(pl_system_init("{"), PL_STATUS_INVALID);
  EXPECT_NE(_plSock, nullptr);
}

TEST_F(StartUp, NeedsNoServiceInSimulation) {
  ::setenv("SIMULATION_VMID", "", 1);
  EXPECT_EQ(pl_system_init("[]"), PL_STATUS_OK);
  EXPECT_NE(_plSock, nullptr);
}

TEST_F(StartUp, IsTheSameForEveryKind) {
  struct Kind {
    pl_status (*init)(const char* json);
    const char* name;
  };
  for (const auto& [init, name] : {Kind{pl_system_init, "pl_system_init"},
                                   {pl_slot_init, "pl_slot_init"},
                                   {pl_led_init, "pl_led_init"},
                                   {pl_temp_sensor_init, "pl_temp_sensor_init"},
                                   {pl_fan_init, "pl_fan_init"},
                                   {pl_xcvr_init, "pl_xcvr_init"},
                                   {pl_psu_init, "pl_psu_init"},
                                   {pl_gpio_init, "pl_gpio_init"},
                                   {pl_smbus_init, "pl_smbus_init"}}) {
    host().traces.clear();
    pauses.clear();
    EXPECT_EQ(init("[7]"), PL_STATUS_FAILED) << name;
    EXPECT_THAT(pauses, SizeIs(30)) << name;
    EXPECT_THAT(host().texts(0), ElementsAre(name, std::string(name) + ": socket Setup failed!"));
    EXPECT_THAT(host().texts(5), ElementsAre(std::string(name) + ": json = [7]"));
  }
  EXPECT_THAT(host().texts(7), ElementsAre("pl_smbus_init\n"));
}

}  // namespace
