// SPDX-License-Identifier: Apache-2.0
//
// Images byte by byte are in test/smbus/service/board/EepromTest.cpp.
#include "identity/Build.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/identity/Images.hpp"

namespace {

using namespace TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

template <typename Build>
std::string complaint(Build build, const std::string& json) {
  try {
    (void)build(json);
  } catch (const Config::FileError& error) {
    return error.what();
  }
  return "no complaint";
}

TEST(IdentityBuild, ABoardAreaComesBeforeTheProductArea) {
  const Bytes image = fru("{'name': 'N1', 'board': {'serial': 'S1'}}");
  EXPECT_EQ(Bytes(image.begin(), image.begin() + 8), (Bytes{1, 0, 0, 1, 3, 0, 0, 0xFB}));
  EXPECT_EQ(Bytes(image.begin() + 8, image.begin() + 24),
            (Bytes{1, 2, 0, 0, 0, 0, 0xC0, 0xC0, 0xC2, 'S', '1', 0xC0, 0xC0, 0xC1, 0, 0xF6}));
}

TEST(IdentityBuild, ABoardAloneMakesNoProductArea) {
  EXPECT_EQ(fru("{'board': {'serial': 'S1'}}").size(), 24u);
}

TEST(IdentityBuild, WhatDoesNotFitIsRefusedAtItsPlace) {
  EXPECT_THAT(complaint(fru, "{'board': {'date': 'yesterday'}}"),
              StartsWith("eeprom.json:1:28: write a time of 1996 to 2027"));
  EXPECT_THAT(complaint(fru, "{'board': {'version': '1x'}}"),
              HasSubstr("\"version\" is not known"));
  EXPECT_THAT(complaint(fru, "{'serial': 'x'}"), HasSubstr("2 to 63 characters"));
  EXPECT_THAT(complaint(fru, "{'chassis': {}}"), HasSubstr("\"chassis\" is not known"));
  EXPECT_THAT(complaint(tlvInfo, "{'0xFE': 1}"), HasSubstr("is no type"));
  EXPECT_THAT(complaint(tlvInfo, "{'0x20': '" + std::string(256, 'x') + "'}"),
              HasSubstr("at most 255 bytes"));
}

TEST(IdentityBuild, ValuesOfATlvInfoHaveTheLengthOfTheirType) {
  EXPECT_EQ(fieldsOf(Identity::readTlvInfo(
                tlvInfo("{'0x24': '02:0A:0C:00:01:ff', '0x26': '0x10', '0x2A': 2, '0x2C': 'US'}"))),
            "0x24=02:0a:0c:00:01:ff 0x26=16 0x2A=2 0x2C=US");
  EXPECT_EQ(tlvInfo("{'0x2A': 300}"), tlvInfo("{'0x2A': [1, 44]}"));
  EXPECT_EQ(complaint(tlvInfo, "{'0x24': [1, 2]}"),
            "eeprom.json:1:22: Base MAC Address (\"0x24\") has 6 bytes, not 2");
  EXPECT_THAT(complaint(tlvInfo, "{'0xFD': 'ABC'}"), HasSubstr("has 4 to 255 bytes, not 3"));
  EXPECT_THAT(complaint(tlvInfo, "{'0x26': 256}"), HasSubstr("a whole number from 0 to 255"));
  EXPECT_THAT(complaint(tlvInfo, "{'0x2A': 65536}"), HasSubstr("a whole number from 0 to 65535"));
  EXPECT_THAT(complaint(tlvInfo, "{'0x2A': 'many'}"), HasSubstr("a whole number"));
}

TEST(IdentityBuild, TextsArePrintableAscii) {
  for (const char* text : {"caf\u00e9", "a\\u0001b", "line\\n"}) {
    EXPECT_EQ(complaint(fru, std::string("{'serial': '") + text + "'}"),
              "eeprom.json:1:20: write characters of ASCII that can be printed");
    EXPECT_EQ(complaint(tlvInfo, std::string("{'0x23': '") + text + "'}"),
              "eeprom.json:1:22: write characters of ASCII that can be printed");
  }
  EXPECT_THAT(complaint(tlvInfo, "{'0x23': 5}"), HasSubstr("write a text in quotes"));
  EXPECT_EQ(tlvInfo("{'0x23': [1, 255]}").size(), 11u + 4 + 6) << "bytes may be any";
}

TEST(IdentityBuild, AnAddressIsWrittenInPairsOfDigits) {
  for (const char* text : {"02:0a:0c:00:01:fg", "2:0a:0c:00:01:ff", "020a0c0001ff",
                           "02:0a:0c:00:01:ff:", "02-0a-0c-00-01-ff", "02:0a:0c:00:01:1ff"}) {
    EXPECT_THAT(complaint(tlvInfo, std::string("{'0x24': '") + text + "'}"),
                HasSubstr("write an address, like \"02:0a:0c:00:01:ff\""))
        << text;
  }
  EXPECT_THAT(complaint(tlvInfo, "{'0x24': '02:0a:0c'}"), HasSubstr("has 6 bytes, not 3"));
}

TEST(IdentityBuild, MoreRecordsThanTheLengthCanTellAreRefused) {
  std::string records = "{'0x20': 1";
  for (int i = 1; i < 256; ++i) {
    records +=
        ", '0x" + std::string(static_cast<size_t>(i), '0') + "21': '" + std::string(255, 'x') + "'";
  }
  EXPECT_THAT(complaint(tlvInfo, records + "}"), HasSubstr("65535 at most"));
}

}  // namespace
