// SPDX-License-Identifier: Apache-2.0
//
// The start of the library: topology in simulation, and the search for the SMBus service.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>

#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"

using testing::ElementsAre;

namespace {

// Where the library's sleep(1) between two attempts to connect arrives.
struct Sleeps {
  int seconds = 0;
  void (*onSecond)(int seconds) = nullptr;
} sleeps;

}  // namespace

// The executable's own definition comes before the C library's for the library, too.
extern "C" __attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
  sleeps.seconds += static_cast<int>(seconds);
  if (sleeps.onSecond != nullptr) {
    sleeps.onSecond(sleeps.seconds);
  }
  return 0;
}

namespace E2e {

namespace {

using HostStartUp = Simulation;
using HostRestart = TracedBoard;

TEST_F(HostStartUp, InitLoadsTheTopology) {
  const std::string text = topology();
  EXPECT_EQ(LIB(pl_fan_init)(text.c_str()), PL_STATUS_OK);
  EXPECT_EQ(takeTrace(), (Trace{{0, "pl_fan_init"},
                                {5, "pl_fan_init: json = " + text},
                                {2, "loading topology json"}}));
}

TEST_F(HostStartUp, SecondInitWithTheSameTextKeepsTheTree) {
  const std::string text = topology();
  ASSERT_EQ(LIB(pl_fan_init)(text.c_str()), PL_STATUS_OK);
  takeTrace();
  EXPECT_EQ(LIB(pl_temp_sensor_init)(text.c_str()), PL_STATUS_OK);
  EXPECT_EQ(takeTrace(),
            (Trace{{0, "pl_temp_sensor_init"},
                   {5, "pl_temp_sensor_init: json = " + text},
                   {2, "topology is the same as the previously loaded one (using it)"}}));
}

TEST_F(HostStartUp, SecondInitWithOneMoreBlankLoadsAgain) {
  ASSERT_EQ(LIB(pl_fan_init)(topology().c_str()), PL_STATUS_OK);
  takeTrace();
  EXPECT_EQ(LIB(pl_fan_init)((topology() + " ").c_str()), PL_STATUS_OK);
  EXPECT_THAT(takeTexts(2), ElementsAre("loading topology json"));
}

struct Init {
  const char* name;
};
constexpr Init kInits[] = {{"pl_system_init"},      {"pl_slot_init"}, {"pl_led_init"},
                           {"pl_temp_sensor_init"}, {"pl_fan_init"},  {"pl_xcvr_init"},
                           {"pl_psu_init"},         {"pl_gpio_init"}, {"pl_smbus_init"}};

TEST_F(HostStartUp, EveryKindHasAnInitThatTracesItsOwnName) {
  for (const Init& init : kInits) {
    const auto call = reinterpret_cast<decltype(&pl_fan_init)>(symbol(init.name));
    EXPECT_EQ(call(topology().c_str()), PL_STATUS_OK);
    EXPECT_THAT(takeTexts(0), ElementsAre(init.name));
  }
}

TEST_F(HostStartUp, TextThatIsNotJsonIsInvalid) {
  EXPECT_EQ(LIB(pl_fan_init)("[{\"type\": }]"), PL_STATUS_INVALID);
  EXPECT_THAT(takeTexts(2),
              ElementsAre("loading topology json",
                          "failed to load topology from json: Invalid value. offset 10"));
}

TEST_F(HostRestart, TextThatIsNotJsonLeavesTheLoadedTree) {
  EXPECT_EQ(LIB(pl_fan_init)(""), PL_STATUS_INVALID);
  EXPECT_NE(LIB(pl_fan_add)(fan(1).c_str()), nullptr);
}

TEST_F(HostRestart, AnInitLaterInTheProcessMakesNoAttemptToConnect) {
  ::unsetenv("SIMULATION_VMID");
  EXPECT_EQ(LIB(plSockInit)("host", 0), PL_STATUS_OK);
}

// Start-up without simulation: the service's socket is a path in a directory of the test.
class HostService : public Simulation {
 protected:
  HostService() : socket_(path("smbus.sock")) {
    ::unsetenv("SIMULATION_VMID");
    ::setenv("NIMBO_SMBUS_SOCKET", socket_.c_str(), 1);
  }

  const std::string socket_;
};

// Something that takes connections at NIMBO_SMBUS_SOCKET, from now on.
void listen() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = std::getenv("NIMBO_SMBUS_SOCKET");
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(fd, 1), 0);
}

TEST_F(HostService, WithoutRetriesThereIsNoAttempt) {
  listen();
  EXPECT_EQ(LIB(nimboLibraryInit)("host", "[]", 0), PL_STATUS_FAILED);
  EXPECT_EQ(takeTrace(),
            (Trace{{0, "host"}, {5, "host: json = []"}, {0, "host: socket Setup failed!"}}));
  EXPECT_EQ(sleeps.seconds, 0);
}

TEST_F(HostService, EveryFailedAttemptCostsASecond) {
  EXPECT_EQ(LIB(nimboLibraryInit)("host", "[]", 3), PL_STATUS_FAILED);
  EXPECT_EQ(sleeps.seconds, 3);
}

TEST_F(HostService, AnInitTriesThirtyTimes) {
  EXPECT_EQ(LIB(pl_led_init)("[]"), PL_STATUS_FAILED);
  EXPECT_EQ(sleeps.seconds, 30);
  EXPECT_THAT(takeTexts(0), ElementsAre("pl_led_init", "pl_led_init: socket Setup failed!"));
}

TEST_F(HostService, ServiceThatComesUpDuringTheThirdAttemptIsFound) {
  sleeps.onSecond = [](int seconds) {
    if (seconds == 2) {
      listen();
    }
  };
  EXPECT_EQ(LIB(pl_fan_init)("[]"), PL_STATUS_OK);
  EXPECT_EQ(sleeps.seconds, 2);
  EXPECT_THAT(takeTexts(2), ElementsAre("loading topology json"));
}

TEST_F(HostService, InitAfterAFailedOneStartsOver) {
  ASSERT_EQ(LIB(nimboLibraryInit)("host", "[]", 1), PL_STATUS_FAILED);
  listen();
  EXPECT_EQ(LIB(nimboLibraryInit)("host", "[]", 1), PL_STATUS_OK);
}

}  // namespace

}  // namespace E2e
