// SPDX-License-Identifier: Apache-2.0
//
// Images of identification EEPROMs, from JSON to what is said of a damaged one.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/NimboFixture.hpp"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::parsed;
using TestSupport::Result;

constexpr const char* kTlvInfo = R"({"tlvInfo": {"0x22": "TPS460AB", "0x23": "12345"}})";
constexpr const char* kFru = R"({"fru": {"name": "DPS550", "board": {"serial": "B1"}}})";

class NimboEeprom : public TestSupport::NimboFixture {
 protected:
  std::string path(const std::string& name) const { return directory_ + "/" + name; }
  void write(const std::string& name, const std::string& contents) const {
    std::ofstream(path(name), std::ios::binary) << contents;
  }
  std::string contents(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  Result build(const std::string& json) const {
    write("in.json", json);
    return nimbo({"eeprom", "build", path("in.json"), path("image")});
  }
  Result look(const std::string& command) const {
    return nimbo({"eeprom", command, path("image")});
  }
};

TEST_F(NimboEeprom, WhatIsBuiltIsShownAndRight) {
  const Result built = build(kTlvInfo);
  EXPECT_EQ(built.code, 0) << built.err;
  EXPECT_EQ(look("show").out,
            "OFFSET  KEY   NAME           VALUE\n"
            "0x000B  0x22  Part Number    TPS460AB\n"
            "0x0015  0x23  Serial Number  12345\n");
  const Result checked = look("check");
  EXPECT_EQ(checked.code, 0) << checked.err;
  EXPECT_EQ(checked.out, path("image") + ": TlvInfo with 2 fields, checksums right\n");
}

TEST_F(NimboEeprom, AFruIsKnownByItsFirstByte) {
  EXPECT_EQ(build(kFru).code, 0);
  EXPECT_EQ(look("check").out, path("image") + ": FRU with 2 fields, checksums right\n");
  EXPECT_THAT(look("show").out, HasSubstr("board.serial  Board Serial Number  B1\n"));
}

TEST_F(NimboEeprom, OneFieldIsNoFields) {
  EXPECT_EQ(build(R"({"tlvInfo": {"0x2A": 300}})").code, 0);
  EXPECT_THAT(look("check").out, HasSubstr(": TlvInfo with 1 field, checksums right\n"));
}

TEST_F(NimboEeprom, ProgramsGetJson) {
  build(kTlvInfo);
  write("image", contents("image").substr(0, 28));
  const Result result = nimbo({"--json", "eeprom", "show", path("image")});
  EXPECT_EQ(result.code, 1);
  const rapidjson::Document shown = parsed(result.out);
  EXPECT_STREQ(shown["format"].GetString(), "TlvInfo");
  EXPECT_EQ(shown["fields"][1]["offset"].GetUint(), 21u);
  EXPECT_STREQ(shown["fields"][1]["key"].GetString(), "0x23");
  EXPECT_STREQ(shown["fields"][1]["name"].GetString(), "Serial Number");
  EXPECT_STREQ(shown["fields"][1]["value"].GetString(), "12345");
  EXPECT_STREQ(shown["fields"][1]["bytes"].GetString(), "31 32 33 34 35");
  EXPECT_EQ(shown["faults"][0]["offset"].GetUint(), 9u);
  EXPECT_STREQ(shown["faults"][0]["message"].GetString(),
               "the image is cut off: 23 bytes of records expected, 17 found");
}

TEST_F(NimboEeprom, ADamagedImageIsToldWithOffsetAndBothValues) {
  build(kTlvInfo);
  std::string image = contents("image");
  image[13] = 'X';
  write("image", image);
  const Result checked = look("check");
  EXPECT_EQ(checked.code, 1);
  EXPECT_EQ(checked.out, "");
  EXPECT_THAT(checked.err, StartsWith(path("image") + ": offset 0x001E: checksum (CRC-32): 0x"));
  const Result shown = look("show");
  EXPECT_EQ(shown.code, 1);
  EXPECT_EQ(shown.err, checked.err);
  EXPECT_THAT(shown.out, HasSubstr("XPS460AB"));
}

TEST_F(NimboEeprom, WhatIsNoImageIsToldWithItsBeginning) {
  write("image", "no EEPROM at all");
  EXPECT_EQ(
      look("check").err,
      path("image") +
          ": offset 0x0000: neither the \"TlvInfo\" and zero of a TlvInfo nor the 01 of a FRU "
          "expected, 6e 6f 20 45 45 50 52 4f found\n");
  EXPECT_EQ(look("show").code, 1);
}

TEST_F(NimboEeprom, FilesThatCannotBeReadAreNamed) {
  EXPECT_EQ(look("show").code, 1);
  EXPECT_EQ(look("show").err, path("image") + ": cannot be read: No such file or directory\n");
  write("image", "");
  EXPECT_EQ(look("check").err, path("image") + ": the file is empty\n");
  EXPECT_EQ(nimbo({"eeprom", "check", directory_}).err,
            directory_ + ": cannot be read: Is a directory\n");
  EXPECT_EQ(nimbo({"eeprom", "check", "/dev/zero"}).err, "/dev/zero: more than 1048576 bytes\n");
}

TEST_F(NimboEeprom, AWrongDescriptionLeavesTheOldImage) {
  build(kTlvInfo);
  const std::string before = contents("image");
  const Result result = build(R"({"fru": {"serial": "x"}})");
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.err, path("in.json") + ":1:20: write 2 to 63 characters, or leave it out\n");
  EXPECT_EQ(contents("image"), before);
}

TEST_F(NimboEeprom, ADescriptionHasOneImage) {
  EXPECT_THAT(build("{}").err, HasSubstr(":1:1: write one of the keys \"tlvInfo\" and \"fru\""));
  EXPECT_EQ(build(R"({"fru": {}, "tlvInfo": {}})").code, 1);
  EXPECT_THAT(build(R"({"fru": {}, "size": 3})").err, HasSubstr("\"size\" is not known here"));
  EXPECT_THAT(build("[]").err, HasSubstr("an object { ... } belongs here"));
  EXPECT_EQ(nimbo({"eeprom", "build", path("in.json")}).code, 2);
}

}  // namespace
