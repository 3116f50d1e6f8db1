// SPDX-License-Identifier: Apache-2.0
#include "smbus/AddressWord.hpp"

#include <gtest/gtest.h>

#include <array>

namespace SmbusAddress {
namespace {

constexpr std::array kFields{kRegister,   kDevice,      kBus,        kAccelerator, kReadFlag,
                             kBusTimeout, kAddressSize, kExtraDelay, kWriteDelay,  kReadDelay};

TEST(AddressWord, FieldsCoverTheWordWithoutGapOrOverlap) {
  unsigned next = 0;
  for (const Field& field : kFields) {
    EXPECT_EQ(field.shift, next);
    next += field.width;
  }
  EXPECT_EQ(next, 64U);
}

TEST(AddressWord, ReadsEachFieldFromItsBits) {
  const uint64_t word = 0xC000'0000'0000'0000U | uint64_t{2} << 60 | uint64_t{1} << 59 |
                        uint64_t{2} << 57 | uint64_t{5} << 54 | uint64_t{1} << 53 |
                        uint64_t{0x41} << 46 | uint64_t{0x22} << 39 | uint64_t{0x58} << 32 | 0x1234;
  EXPECT_EQ(kRegister.get(word), 0x1234U);
  EXPECT_EQ(kDevice.get(word), 0x58U);
  EXPECT_EQ(kBus.get(word), 0x22U);
  EXPECT_EQ(kAccelerator.get(word), 0x41U);
  EXPECT_EQ(kReadFlag.get(word), 1U);
  EXPECT_EQ(kBusTimeout.get(word), 5U);
  EXPECT_EQ(kAddressSize.get(word), 2U);
  EXPECT_EQ(kExtraDelay.get(word), 1U);
  EXPECT_EQ(kWriteDelay.get(word), 2U);
  EXPECT_EQ(kReadDelay.get(word), 3U);
}

TEST(AddressWord, SettingAFieldLeavesTheOthersAlone) {
  EXPECT_EQ(kBus.set(~uint64_t{0}, 0), ~(uint64_t{0x7F} << 39));
  EXPECT_EQ(kRegister.set(uint64_t{1} << 32, 0xFFFF'FFFF), uint64_t{1} << 32 | 0xFFFF'FFFF);
}

TEST(AddressWord, ATooWideValueIsCutToItsField) {
  EXPECT_EQ(kDevice.set(0, 0x1A5), uint64_t{0x25} << 32);
}

}  // namespace
}  // namespace SmbusAddress
