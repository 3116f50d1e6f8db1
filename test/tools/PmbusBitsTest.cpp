// SPDX-License-Identifier: Apache-2.0
#include "tools/PmbusBits.hpp"

#include <gmock/gmock.h>

namespace {

using Nimbo::isPmbusStatus;
using Nimbo::pmbusBits;
using SmbusService::Board::PmbusCode;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(PmbusBits, BitsAreNamedFromTheTop) {
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_WORD, 0x2848),
              ElementsAre("INPUT", "POWER_GOOD#", "OFF", "VIN_UV_FAULT"));
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_INPUT, 0x18),
              ElementsAre("VIN_UV_FAULT", "OFF_FOR_LOW_VIN"));
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_FANS_1_2, 0x40), ElementsAre("FAN_2_FAULT"));
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_WORD, 0), IsEmpty());
}

TEST(PmbusBits, BitWithoutANameIsNumbered) {
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_TEMPERATURE, 0x81), ElementsAre("OT_FAULT", "BIT_0"));
  EXPECT_THAT(pmbusBits(PmbusCode::STATUS_MFR_SPECIFIC, 0x82), ElementsAre("BIT_7", "BIT_1"));
}

TEST(PmbusBits, EveryBitOfEveryRegisterSaysSomething) {
  for (unsigned code = 0; code <= UINT8_MAX; ++code) {
    const auto status = PmbusCode{static_cast<uint8_t>(code)};
    const size_t bits = !isPmbusStatus(status) ? 0 : status == PmbusCode::STATUS_WORD ? 16 : 8;
    EXPECT_THAT(pmbusBits(status, 0xFFFF), SizeIs(bits)) << code;
  }
}

}  // namespace
