// SPDX-License-Identifier: Apache-2.0
#include "smbus/Frame.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Frame, TheMostSignificantByteOfTheLengthGoesFirst) {
  std::string header(SmbusFrame::kHeaderSize, '\xFF');
  SmbusFrame::putLength(header.data(), 0x00012380);
  EXPECT_EQ(header, std::string("\x00\x01\x23\x80", 4));
}

TEST(Frame, EveryLengthComesBack) {
  for (const uint32_t length : {0U, 1U, 0x80U, 0x8000U, SmbusFrame::kMaxMessage, 0xFFFFFFFFU}) {
    char header[SmbusFrame::kHeaderSize];
    SmbusFrame::putLength(header, length);
    EXPECT_EQ(SmbusFrame::announcedLength(header), length);
  }
}

}  // namespace
