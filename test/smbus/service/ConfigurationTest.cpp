// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Configuration.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace SmbusService {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kOneBus = R"({"master": "I2C", "bus": 5, "backend": {"linux": 3}})";

Configuration read(const std::string& text) {
  return readConfiguration(Config::JsonFile::parse("dir/smbusd.json", text));
}

Configuration withBuses(const std::string& buses, const std::string& rest = "") {
  return read("{" + rest + "\"buses\": [" + buses + "]}");
}

std::string errorOf(const std::string& text) {
  try {
    (void)read(text);
  } catch (const Config::FileError& error) {
    return error.what();
  }
  return "";
}

TEST(Configuration, ABusIsNamedByAllItsParts) {
  const Configuration configuration = withBuses(
      R"({"master": "SCD", "controller": "0x700", "accelerator": 1, "bus": 3,
          "backend": {"linux": "i801"}},
         {"master": "PLM", "controller": 16, "bus": 4, "backend": {"linux": 7}})");
  ASSERT_EQ(configuration.buses.size(), 2U);
  EXPECT_EQ(configuration.buses[0].key, (BusKey{Smbus::SCD, 0x700, 1, 3}));
  EXPECT_EQ(configuration.buses[1].key, (BusKey{Smbus::PLM, 16, 0, 4}));
}

TEST(Configuration, AnAdapterHasANumberOrAName) {
  const Configuration configuration = withBuses(
      R"({"master": "I2C", "bus": 1, "backend": {"linux": 7}},
         {"master": "I2C", "bus": 2, "backend": {"linux": "i801"}})");
  EXPECT_EQ(std::get<uint32_t>(std::get<LinuxBackEnd>(configuration.buses[0].backEnd).adapter), 7U);
  EXPECT_EQ(std::get<std::string>(std::get<LinuxBackEnd>(configuration.buses[1].backEnd).adapter),
            "i801");
}

TEST(Configuration, AVirtualBoardIsFoundBesideTheFile) {
  const std::string bus = R"({"master": "I2C", "bus": 1, "backend": {"virtual": "b1"}})";
  const Configuration configuration = withBuses(bus, R"("virtual_board": "board.json",)");
  EXPECT_EQ(configuration.virtualBoard, "dir/board.json");
  EXPECT_EQ(std::get<VirtualBackEnd>(configuration.buses[0].backEnd).bus, "b1");
  EXPECT_EQ(withBuses(bus, R"("virtual_board": "/etc/board.json",)").virtualBoard,
            "/etc/board.json");
}

TEST(Configuration, WhatIsLeftOutHasItsDefault) {
  ::unsetenv("NIMBO_SMBUS_SOCKET");
  const Configuration configuration = withBuses(kOneBus);
  EXPECT_EQ(configuration.socket.path, "/run/nimbo/smbus.sock");
  EXPECT_EQ(configuration.socket.mode, 0660U);
  EXPECT_EQ(configuration.socket.group, "");
  EXPECT_EQ(configuration.retries, 0U);
  EXPECT_TRUE(configuration.force);
  for (const LimitRow& row : limitTable()) {
    EXPECT_EQ(configuration.limits.*row.value, Limits{}.*row.value) << row.key;
  }
}

TEST(Configuration, TheEnvironmentNamesTheSocketThatTheFileDoesNot) {
  ::setenv("NIMBO_SMBUS_SOCKET", "/tmp/from-environment", 1);
  EXPECT_EQ(withBuses(kOneBus).socket.path, "/tmp/from-environment");
  EXPECT_EQ(withBuses(kOneBus, R"("socket": {"path": "/tmp/from-file"},)").socket.path,
            "/tmp/from-file");
}

TEST(Configuration, EveryLimitCanBeSet) {
  for (const LimitRow& row : limitTable()) {
    const uint32_t value = row.least + 1;
    const Configuration configuration = withBuses(
        kOneBus, "\"limits\": {\"" + std::string(row.key) + "\": " + std::to_string(value) + "},");
    EXPECT_EQ(configuration.limits.*row.value, value) << row.key;
  }
}

TEST(Configuration, TheTableHasEveryLimitOnce) {
  EXPECT_EQ(limitTable().size() * sizeof(uint32_t), sizeof(Limits));
}

TEST(Configuration, TheSchemaSaysOfLimitsWhatTheTableSays) {
  rapidjson::Document schema;
  const std::string_view text = configurationSchema();
  schema.Parse(text.data(), text.size());
  ASSERT_FALSE(schema.HasParseError());
  const auto& limits = schema["properties"]["limits"]["properties"];
  EXPECT_EQ(limits.MemberCount(), limitTable().size());
  for (const LimitRow& row : limitTable()) {
    ASSERT_TRUE(limits.HasMember(row.key)) << row.key;
    const auto& limit = limits[row.key];
    EXPECT_EQ(limit["minimum"].GetUint(), row.least) << row.key;
    EXPECT_EQ(limit["maximum"].GetUint(), row.most) << row.key;
    EXPECT_EQ(limit["default"].GetUint(), Limits{}.*row.value) << row.key;
    EXPECT_STREQ(limit["description"].GetString(), row.meaning);
  }
}

TEST(Configuration, TheDocumentSaysOfLimitsWhatTheTableSays) {
  std::ifstream file(SMBUSD_DOCUMENT);
  const std::string document(std::istreambuf_iterator<char>(file), {});
  for (const LimitRow& row : limitTable()) {
    EXPECT_THAT(document, HasSubstr("| `" + std::string(row.key) + "` | " +
                                    std::to_string(Limits{}.*row.value) + " | " + row.unit + " | " +
                                    row.meaning + " |\n"));
  }
}

TEST(Configuration, SocketModeIsOctal) {
  EXPECT_EQ(withBuses(kOneBus, R"("socket": {"mode": "0600"},)").socket.mode, 0600U);
  EXPECT_THAT(errorOf(R"({"socket": {"mode": "rw"}, "buses": []})"),
              StartsWith("dir/smbusd.json:1:21: \"rw\""));
}

TEST(Configuration, BothSocketsAreCheckedAlike) {
  for (const char* socket : {"socket", "control"}) {
    const std::string begin = "{\"" + std::string(socket) + "\": {";
    EXPECT_THAT(errorOf(begin + "\"path\": 1}, \"buses\": []}"),
                HasSubstr("expected string, not a number (path of the socket)"));
    EXPECT_THAT(errorOf(begin + "\"mode\": \"999\"}, \"buses\": []}"), HasSubstr("octal text"));
    EXPECT_THAT(errorOf(begin + "\"port\": 1}, \"buses\": []}"), HasSubstr("\"port\""));
  }
}

TEST(Configuration, ABusThatStandsThereTwiceIsAnError) {
  EXPECT_EQ(errorOf("{\"buses\": [" + std::string(kOneBus) + ",\n" + kOneBus + "]}"),
            "dir/smbusd.json:2:1: I2C bus 5 stands here a second time, first at "
            "dir/smbusd.json:1:12; give each bus once");
}

TEST(Configuration, AVirtualBusNeedsAVirtualBoard) {
  EXPECT_EQ(errorOf(R"({"buses": [{"master": "I2C", "bus": 1, "backend": {"virtual": "b"}}]})"),
            "dir/smbusd.json:1:51: a virtual bus needs a virtual board; name its file in "
            "\"virtual_board\"");
}

TEST(Configuration, EveryMistakeIsToldWithItsPlace) {
  const std::string bus = kOneBus;
  for (const std::string& text :
       {std::string("{}"), std::string(R"({"buses": []})"), "{\"bus\": [" + bus + "]}",
        "{\"limits\": {\"connections\": 0}, \"buses\": [" + bus + "]}",
        "{\"limits\": {\"conections\": 1}, \"buses\": [" + bus + "]}",
        std::string(R"({"buses": [{"master": "i2c", "bus": 1, "backend": {"linux": 1}}]})"),
        std::string(R"({"buses": [{"master": "I2C", "bus": 128, "backend": {"linux": 1}}]})"),
        std::string(R"({"buses": [{"master": "I2C", "bus": 1, "backend": {}}]})"),
        std::string(R"({"buses": [{"master": "I2C", "bus": 1, "backend": {"usb": 1}}]})"),
        std::string(R"({"buses": [{"master": "I2C", "bus": 1, "controller": "1x",
                        "backend": {"linux": 1}}]})")}) {
    EXPECT_THAT(errorOf(text), StartsWith("dir/smbusd.json:1:")) << text;
  }
}

}  // namespace
}  // namespace SmbusService
