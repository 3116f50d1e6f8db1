// SPDX-License-Identifier: Apache-2.0
//
// A host on the whole production path: the built library, a real smbusd, and the Halvorsa board in
// its virtual form, all from the files that are installed.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "NimboUtil/PLSocket.hpp"
#include "test/e2e/BoardFile.hpp"
#include "test/e2e/Library.hpp"
#include "test/support/Host.hpp"
#include "test/support/SmbusdProcess.hpp"
#include "test/support/TextMessage.hpp"

using Doubles::host;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace E2e {

namespace {

class LiveBoard : public testing::Test {
 protected:
  LiveBoard() { EXPECT_EQ(LIB(pl_system_init)(board.topology().c_str()), PL_STATUS_OK); }

  pl_fan* addFan(const char* name) {
    return LIB(pl_fan_add)(board.description("fans", name).c_str());
  }

  // Of a module's or an EEPROM's 16 bytes from `reg` on.
  static std::string textOf(pl_smbus* smbus, unsigned char reg) {
    unsigned char text[16] = {};
    EXPECT_EQ(smbus->ops->i2c_block_read(smbus, reg, text, sizeof text), PL_STATUS_OK);
    return {text, text + sizeof text};
  }

  static void expectRunning(pl_fan* fan) {
    int rpm = 0;
    EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_OK);
    EXPECT_NEAR(rpm, 8190, 200);
  }

  static void expectFailure(pl_fan* fan, const char* trace) {
    int rpm = -5;
    host().traces.clear();
    EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_FAILED);
    EXPECT_EQ(rpm, -5);
    EXPECT_THAT(host().texts(3), ElementsAre(trace));
  }

  const BoardFile board{NIMBO_BOARDS "/halvorsa/board.json"};
  Doubles::SmbusdProcess service{contentsOf(NIMBO_BOARDS "/halvorsa/smbusd.json"),
                                 contentsOf(NIMBO_BOARDS "/halvorsa/virtual-board.json")};
};

TEST_F(LiveBoard, FansTurn) {
  for (const char* name : {"fan1", "fan2", "fan3"}) {
    expectRunning(addFan(name));
  }
}

TEST_F(LiveBoard, StalledFanIsKnownAfterATick) {
  pl_fan* fan = addFan("fan4");
  int rpm = -5;
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 0);
  host().fire(host().timer());
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_FAULT);
  EXPECT_THAT(host().texts(0), Contains("Fan 3 stalled"));
}

TEST_F(LiveBoard, TemperaturesAreTheBoards) {
  const std::pair<const char*, float> expected[] = {{"switch-asic", 40}, {"cpu-board", 39},
                                                    {"front-left", 39},  {"front-right", 38},
                                                    {"rear-left", 39},   {"rear-right", 38}};
  for (const auto& [name, celsius] : expected) {
    pl_temp_sensor* sensor =
        LIB(pl_temp_sensor_add)(board.description("temp_sensors", name).c_str(), 70, 80);
    ASSERT_NE(sensor, nullptr) << name;
    float value = 0;
    EXPECT_EQ(sensor->ops->get_temperature(sensor, &value), PL_STATUS_OK) << name;
    EXPECT_EQ(value, celsius) << name;
  }
}

TEST_F(LiveBoard, LinesAreSetAndCleared) {
  pl_gpio* line = LIB(pl_gpio_add)(board.description("gpios", "watchdog-enable").c_str());
  unsigned int level = 5;
  EXPECT_EQ(line->ops->bit_set(line), PL_STATUS_OK);
  EXPECT_EQ(line->ops->bit_read(line, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 1u);
  EXPECT_EQ(line->ops->bit_clear(line), PL_STATUS_OK);
  EXPECT_EQ(line->ops->bit_read(line, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 0u);
}

TEST_F(LiveBoard, EepromsOfOneAddressAreToldApartByTheirChannel) {
  pl_smbus* first = LIB(pl_smbus_add)("Psu1Eeprom", 0x50);
  pl_smbus* second = LIB(pl_smbus_add)("Psu2Eeprom", 0x50);
  EXPECT_THAT(textOf(first, 0), StartsWith("PSU 1"));
  EXPECT_THAT(textOf(second, 0), StartsWith("PSU 2"));
  EXPECT_EQ(first->ops->write_word(first, 0x40, 0x1234), PL_STATUS_OK);
  unsigned short word = 0;
  EXPECT_EQ(second->ops->read_word(second, 0x40, &word), PL_STATUS_OK);
  EXPECT_EQ(word, 0xFFFF);
  EXPECT_EQ(first->ops->read_word(first, 0x40, &word), PL_STATUS_OK);
  EXPECT_EQ(word, 0x1234);
}

TEST_F(LiveBoard, ModulesBehindNestedMuxesAreToldApart) {
  pl_smbus* first = LIB(pl_smbus_add)("Qsfp49", 0x50);
  pl_smbus* third = LIB(pl_smbus_add)("Qsfp51", 0x50);
  EXPECT_EQ(textOf(first, 0xC4), "NO49000001      ");
  EXPECT_EQ(textOf(third, 0xC4), "NO51000002      ");
  EXPECT_EQ(textOf(first, 0xC4), "NO49000001      ");
}

TEST_F(LiveBoard, AbsentModuleFailsWithTheServicesReasonAndLeavesThePathClosed) {
  pl_smbus* absent = LIB(pl_smbus_add)("Qsfp50", 0x50);
  unsigned char byte = 0xA5;
  host().traces.clear();
  EXPECT_EQ(absent->ops->read_byte(absent, 0, &byte), PL_STATUS_REMOTE);
  EXPECT_EQ(byte, 0xA5);
  EXPECT_THAT(
      host().texts(3),
      ElementsAre(testing::AllOf(
          StartsWith("execute: failure in response "), testing::HasSubstr("request 2 "),
          testing::HasSubstr("device 0x50"), testing::HasSubstr("No such device or address"))));
  // The outer mux's own register, read past the library.
  PlatformLibrary::PLSocket socket;
  auto request = Doubles::messageOf<Smbus::TransactionRequest>(
      "request { type: Read addr: 0x020000F000000000 size: 0 controllerAddr: 0 mastertype: SCD }");
  Smbus::TransactionResponse* given = nullptr;
  ASSERT_EQ(socket.sendRequestWait(&request, &given), 0);
  const std::unique_ptr<Smbus::TransactionResponse> response(given);
  EXPECT_EQ(response->DebugString(), "response {\n  data: \"\\000\"\n}\n");
  EXPECT_EQ(textOf(LIB(pl_smbus_add)("Qsfp51", 0x50), 0xC4), "NO51000002      ");
}

TEST_F(LiveBoard, ServiceKilledFailsCallsUntilItIsStartedAgain) {
  pl_fan* fan = addFan("fan1");
  expectRunning(fan);
  service.kill();
  expectFailure(fan, "execute: error. 111, Connection refused");
  service.start();
  expectRunning(fan);
}

TEST_F(LiveBoard, ServiceStoppedTakesItsSocketAlong) {
  pl_fan* fan = addFan("fan1");
  service.stop();
  expectFailure(fan, "execute: error. 2, No such file or directory");
  service.start();
  expectRunning(fan);
}

TEST_F(LiveBoard, ServiceKilledAndStartedBetweenCallsIsNotNoticed) {
  pl_fan* fan = addFan("fan1");
  expectRunning(fan);
  host().traces.clear();
  service.kill();
  service.start();
  expectRunning(fan);
  EXPECT_THAT(host().texts(3), IsEmpty());
}

}  // namespace

}  // namespace E2e
