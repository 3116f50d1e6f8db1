// SPDX-License-Identifier: Apache-2.0
//
// The host tool with the plug-in, as an operator runs it; programs of the test's own stand in the
// place of FreeIPMI's.
#include <gmock/gmock.h>

#include <string>

#include "test/ipmi/Directory.hpp"
#include "test/tools/NimboFixture.hpp"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr const char* kBoard = R"({"board": "B"%, "topology": [{"type": "I2C", "ham": "NimboSmbus",
  "id": 0, "devices": [{"did": 1, "label": "BMC", "driver": "Ipmi", "provideHam": 0,
  "address": {"address": 0}, "driverArgs": {"hamType": "bmc", "maxRpm": 9000}}]}],
  "fans": [{"name": "f", "device": "BMC", "args": {"fanId": 1, "ipmiKey": "FAN1"}}]})";

class NimboWithPlugin : public TestSupport::NimboFixture {
 protected:
  NimboWithPlugin() {
    files.writeProgram("ipmi-sensors", "echo \"1,FAN1,Fan,Nominal,5400.00,RPM,'OK'\"");
    files.writeProgram("ipmi-fru", "exit 0");
    files.write("ipmi.json", R"({"toolDirectory": ")" + files.path("") +
                                 R"(", "cacheDirectory": ")" + files.path("cache") +
                                 R"(", "controllers": {"bmc": {"interval": 0.1}}})");
  }

  std::string board(const std::string& furtherKeys = "") {
    std::string text = kBoard;
    return files.write("board.json", text.replace(text.find('%'), 1, furtherKeys));
  }

  std::map<std::string, std::string> withConfiguration(const std::string& file) const {
    auto all = environment();
    all["NIMBO_IPMI_CONFIG"] = files.path(file);
    return all;
  }

  // Watches until the fan has a speed, and gives it.
  int speed(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"watch", "fans", "--json", "--interval", "0.05"});
    TestSupport::Process watch(command(arguments), withConfiguration("ipmi.json"));
    for (std::string line; watch.readLine(line);) {
      const rapidjson::Document look = TestSupport::parsed(line);
      if (look["fans"][0]["rpm"].IsInt()) {
        return look["fans"][0]["rpm"].GetInt();
      }
    }
    return -1;
  }

  Doubles::Directory files;
};

TEST_F(NimboWithPlugin, OptionBringsTheControllersFans) {
  EXPECT_EQ(speed({"--board", board(), "--plugin", NIMBO_BUILT_PLUGIN}), 5400);
}

TEST_F(NimboWithPlugin, BoardDescriptionMayNameIt) {
  EXPECT_EQ(speed({"--board", board(R"(, "plugins": [")" NIMBO_BUILT_PLUGIN R"("])")}), 5400);
}

TEST_F(NimboWithPlugin, MissingPluginIsNamed) {
  const TestSupport::Result result = nimbo({"--board", board(), "--plugin", "/none.so", "show"});
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(result.err, StartsWith("nimbo: a plug-in cannot be loaded: /none.so: "));
}

TEST_F(NimboWithPlugin, WhatIsWrongWithItsConfigurationIsSaid) {
  files.write("wrong.json", R"({"controllers": {"bmc": {"hots": "x"}}})");
  const TestSupport::Result result =
      TestSupport::run(command({"--board", board(), "--plugin", NIMBO_BUILT_PLUGIN, "show"}),
                       withConfiguration("wrong.json"));
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(result.err, HasSubstr("wrong.json:1:26: unknown key \"hots\""));
}

}  // namespace
