// SPDX-License-Identifier: Apache-2.0
#include "identity/Text.hpp"

#include <gtest/gtest.h>

#include "identity/FruTime.hpp"

namespace {

using namespace Identity;

TEST(IdentityText, WhatCannotBePrintedIsHexadecimal) {
  EXPECT_EQ(plainText(Bytes{'a', ' ', '~'}), "a ~");
  EXPECT_EQ(plainText(Bytes{'a', 0x1B, 0xFF}), "61 1b ff");
}

TEST(IdentityText, ANumberHasItsMostSignificantByteFirst) {
  EXPECT_EQ(numberText(Bytes{1, 0}), "256");
  EXPECT_EQ(numberText(Bytes(9, 1)), "01 01 01 01 01 01 01 01 01");
}

// The standard's example: "IPMI" in 6-bit ASCII.
TEST(IdentityText, AWideCharacterHasTwoBytes) {
  EXPECT_EQ(wideText(Bytes{'a', 0, 0x3A, 0x26, '~', 0, 0x1B, 0}), "a?~?");
  EXPECT_EQ(wideText(Bytes{'a', 0, 'b'}), "61 00 62");
}

TEST(IdentityText, SixBitCharactersBeginWithTheLeastSignificantBits) {
  EXPECT_EQ(sixBitText(Bytes{0x29, 0xDC, 0xA6}), "IPMI");
}

TEST(IdentityText, BcdPlusHasDigitsBlankDashAndPeriod) {
  EXPECT_EQ(bcdPlusText(Bytes{0x12, 0xAB, 0xC9}), "12 -.9");
}

TEST(FruTime, MinutesCountFrom1996) {
  EXPECT_EQ(Fru::timeText(0), "1996-01-01T00:00Z");
  EXPECT_EQ(Fru::parseTime("1996-02-29T00:01Z"), 59u * 24 * 60 + 1);
  EXPECT_EQ(Fru::timeText(0xFFFFFF), "2027-11-24T20:15Z");
  EXPECT_EQ(Fru::parseTime("2027-11-24T20:15Z"), 0xFFFFFFu);
}

TEST(FruTime, WhatIsNoTimeIsNone) {
  for (const char* text : {"", "1996-01-01T00:00Z", "1995-12-31T23:59Z", "2027-11-24T20:16Z",
                           "2026-02-29T00:00Z", "2026-01-01T24:00Z", "2026-01-01T00:60Z",
                           "2026-1-1T00:00Z", "2026-01-01T00:00", "2026-01-01T00:00Z "}) {
    EXPECT_FALSE(Fru::parseTime(text)) << text;
  }
}

}  // namespace
