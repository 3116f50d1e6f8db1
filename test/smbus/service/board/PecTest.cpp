// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Pec.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace SmbusService::Board {
namespace {

Pec pecOf(std::string_view bytes) {
  Pec pec;
  for (const char c : bytes) {
    pec.add(static_cast<uint8_t>(c));
  }
  return pec;
}

// The check value of this CRC (polynomial 0x07, from 0, not reflected) over the usual text.
TEST(PecTest, HasTheCheckValueOfItsPolynomial) { EXPECT_EQ(pecOf("123456789").value(), 0xF4); }

TEST(PecTest, IsZeroOverABytesAndItsOwnCode) {
  Pec pec = pecOf("\x4E\x20\x4F\x28");
  pec.add(pec.value());
  EXPECT_EQ(pec.value(), 0);
}

TEST(PecTest, StartsAfreshAfterReset) {
  Pec pec = pecOf("something");
  pec.reset();
  pec.add(0x01);
  EXPECT_EQ(pec.value(), 0x07);
}

}  // namespace
}  // namespace SmbusService::Board
