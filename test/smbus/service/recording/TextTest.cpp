// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Text.hpp"

#include <gtest/gtest.h>

#include <ctime>

namespace SmbusService::Recording {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

TEST(RecordingText, BytesAreTwoDigitsEach) {
  EXPECT_EQ(toHex(std::string("\x00\x7f\xff", 3)), "007fff");
  EXPECT_EQ(fromHex("007fFF"), std::string("\x00\x7f\xff", 3));
  EXPECT_EQ(fromHex(""), "");
}

TEST(RecordingText, WhatAreNoBytesIsRefused) {
  for (const char* text : {"0", "0g", "+1", "-1", "0x", " 1"}) {
    EXPECT_EQ(fromHex(text), std::nullopt) << text;
  }
}

TEST(RecordingText, WordsHaveSixteenDigits) {
  EXPECT_EQ(toWord(0x0340004E00000040), "0x0340004e00000040");
  EXPECT_EQ(fromWord("0x0340004e00000040"), 0x0340004E00000040U);
  EXPECT_EQ(fromWord("0xffffffffffffffff"), UINT64_MAX);
  EXPECT_EQ(fromWord("0x1"), 1U);
}

TEST(RecordingText, WhatIsNoWordIsRefused) {
  for (const char* text : {"", "0x", "1", "0x10000000000000000", "0x-1", "0x1 ", "x1"}) {
    EXPECT_EQ(fromWord(text), std::nullopt) << text;
  }
}

// The C library knows the calendar, too.
TEST(RecordingText, TimesAreThoseOfTheCLibrary) {
  for (const std::time_t time : {0L, 951'782'399L, 951'782'400L, 1'709'251'199L, 4'102'444'800L}) {
    char text[32];
    std::tm parts{};
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", ::gmtime_r(&time, &parts));
    EXPECT_EQ(toUtc(seconds(time)), std::string(text) + ".000000Z");
    EXPECT_EQ(fromUtc(std::string(text) + "Z"), seconds(time));
  }
}

TEST(RecordingText, TimesKeepTheirMicroseconds) {
  EXPECT_EQ(toUtc(seconds(1) + nanoseconds(2'003'999)), "1970-01-01T00:00:01.002003Z");
  EXPECT_EQ(fromUtc("1970-01-01T00:00:01.002003Z"), seconds(1) + nanoseconds(2'003'000));
  EXPECT_EQ(fromUtc("1970-01-01T00:00:01.5"), nanoseconds(1'500'000'000));
}

TEST(RecordingText, ADateIsItsBeginning) { EXPECT_EQ(fromUtc("1970-01-02"), seconds(86400)); }

TEST(RecordingText, WhatIsNoTimeIsRefused) {
  for (const char* text :
       {"", "yesterday", "1970-13-01", "1970-02-30", "1970-01-01 00:00:00", "1970-01-01T24:00:00Z",
        "1970-01-01T00:60:00Z", "1970-01-01T00:00:60Z", "1970-01-01T00:00:00.Z",
        "1970-01-01T00:00:00.1234567890Z", "1970-01-01T00:00", "1969-12-31", "2201-01-01",
        "1970-01-01T00:00:00Zx", "-970-01-01"}) {
    EXPECT_EQ(fromUtc(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace SmbusService::Recording
