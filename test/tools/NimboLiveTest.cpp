// SPDX-License-Identifier: Apache-2.0
//
// nimbo over the production path: library, messages, socket, service, and behind it the virtual
// board that boards/halvorsa/ describes.
#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/LiveFixture.hpp"

namespace {

using testing::HasSubstr;
using TestSupport::parsed;
using TestSupport::Process;
using TestSupport::Result;

class NimboLive : public TestSupport::LiveFixture {};

TEST_F(NimboLive, ShowsTheSameBoardAsTheSimulation) {
  const Result real = live({"show", "--json"});
  const rapidjson::Document hardware = parsed(real.out);
  const rapidjson::Document simulation = parsed(nimbo({"show", "--json"}).out);
  EXPECT_EQ(real.code, 3) << "a fan stalls";
  EXPECT_STREQ(hardware["mode"].GetString(), "live");
  for (const char* kind : {"fans", "temp_sensors", "slots", "leds", "xcvrs", "gpios"}) {
    ASSERT_EQ(hardware[kind].Size(), simulation[kind].Size());
    for (rapidjson::SizeType i = 0; i < hardware[kind].Size(); ++i) {
      EXPECT_EQ(hardware[kind][i]["name"], simulation[kind][i]["name"]);
    }
  }
  EXPECT_STREQ(hardware["fans"][3]["condition"].GetString(), "stalled");
  EXPECT_NEAR(hardware["fans"][0]["rpm"].GetInt(), 8190, 400);
  EXPECT_NEAR(hardware["temp_sensors"][0]["celsius"].GetDouble(), 40, 3);
}

TEST_F(NimboLive, SmbusReadsInEveryModeBehindAMux) {
  const Result result =
      live({"smbus", "system-eeprom", "get", "0", "get", "0", "w", "get", "0", "i", "3", "get"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out,
            "0x48\n"
            "0x6148\n"
            "48 61 6c\n"
            "0x76\n");
}

TEST_F(NimboLive, DevicesOfOneAddressBehindTwoChannelsAreToldApart) {
  EXPECT_EQ(live({"smbus", "psu1-eeprom", "get", "0", "i", "5"}).out, "50 53 55 20 31\n");
  EXPECT_EQ(live({"smbus", "psu2-eeprom", "get", "0", "i", "5"}).out, "50 53 55 20 32\n");
}

TEST_F(NimboLive, NestedMuxesLeadToTheModule) {
  EXPECT_EQ(live({"smbus", "qsfp51", "get", "0x94", "i", "5"}).out, "4e 49 4d 42 4f\n");
}

TEST_F(NimboLive, WhatWasWrittenIsRead) {
  const Result result = live({"smbus", "psu1-eeprom", "set", "0x20", "1", "2", "3", "s", "get",
                              "0x20", "s", "set", "0x40", "0xBEEF", "w", "get", "0x40", "w"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "01 02 03\n0xbeef\n");
}

TEST_F(NimboLive, JsonOfReadsIsNumbersAndArrays) {
  EXPECT_EQ(live({"--json", "smbus", "psu1-eeprom", "get", "0", "get", "0", "i", "3"}).out,
            "80\n[80,83,85]\n");
}

TEST_F(NimboLive, ModuleThatIsNotThereIsExplained) {
  const Result result = live({"smbus", "qsfp52", "get", "0"});
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("nimbo: qsfp52: failed (no answer): "));
  EXPECT_THAT(result.err, HasSubstr("to device 0x50"));
}

TEST_F(NimboLive, FirstOperationThatFailsEndsTheCommand) {
  EXPECT_EQ(live({"smbus", "qsfp52", "get", "0", "get", "1"}).out, "");
}

TEST_F(NimboLive, GpioLinesAreSetAndCleared) {
  EXPECT_EQ(live({"gpio", "get", "usb-power"}).out, "1\n");
  EXPECT_EQ(live({"gpio", "set", "watchdog-enable"}).code, 0);
  EXPECT_EQ(live({"gpio", "get", "watchdog-enable"}).out, "1\n");
  EXPECT_EQ(live({"gpio", "clear", "watchdog-enable"}).code, 0);
  EXPECT_EQ(live({"gpio", "get", "watchdog-enable"}).out, "0\n");
  EXPECT_EQ(live({"gpio", "get", "usb-power"}).out, "1\n") << "the other bit of the register";
}

TEST_F(NimboLive, FansFollowTheMaster) {
  ASSERT_EQ(live({"fan", "set", "fan1", "20000"}).code, 0);
  Process watch(command({"--live", "--json", "watch", "fans", "--interval", "0.05"}),
                environment());
  std::string line;
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (parsed(line)["fans"][1]["rpm"].GetInt() < 10000);
}

TEST_F(NimboLive, WatchGoesOnWhenTheServiceEnds) {
  Process watch(command({"--live", "--json", "watch", "fans", "--interval", "0.05"}),
                environment());
  std::string line;
  ASSERT_TRUE(watch.readLine(line));
  EXPECT_STREQ(parsed(line)["fans"][0]["status"].GetString(), "OK");
  service_.signal(SIGTERM);
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (parsed(line)["fans"][0]["status"] == "OK");
  EXPECT_STREQ(parsed(line)["fans"][0]["status"].GetString(), "FAILED");
}

}  // namespace
