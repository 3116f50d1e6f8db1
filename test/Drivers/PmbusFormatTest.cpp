// SPDX-License-Identifier: Apache-2.0
#include "Drivers/PmbusFormat.hpp"

#include <gtest/gtest.h>

#include <random>

#include "test/support/LinearOracle.hpp"

namespace {

using Doubles::expectedLinear;
using Drivers::linear11ToReal;
using Drivers::linearToReal;
using Drivers::realToLinear;

constexpr unsigned kWords = 65536;

TEST(Linear11, DecodesEveryWord) {
  for (unsigned word = 0; word < kWords; ++word) {
    ASSERT_EQ(linear11ToReal(static_cast<uint16_t>(word)), Doubles::expectedLinear11(word))
        << std::hex << word;
  }
}

TEST(Linear11, DecodesWordsThatWereReadOffSupplies) {
  EXPECT_EQ(linear11ToReal(0xF84C), 38.0f);
  EXPECT_EQ(linear11ToReal(0x1B69), 6984.0f);
  EXPECT_EQ(linear11ToReal(0xF264), 153.0f);
  EXPECT_EQ(linear11ToReal(0x2A02), 16448.0f);
  EXPECT_EQ(linear11ToReal(0xD2E1), 11.515625f);
  EXPECT_EQ(linear11ToReal(0xF3A3), 232.75f);
}

TEST(Linear11, ReachesFromItsLeastToItsGreatestNumber) {
  EXPECT_EQ(linear11ToReal(0x7BFF), 1023.0f * 32768.0f);
  EXPECT_EQ(linear11ToReal(0x7C00), -1024.0f * 32768.0f);
  EXPECT_EQ(linear11ToReal(0x8001), 1.0f / 65536.0f);
  EXPECT_EQ(linear11ToReal(0x87FF), -1.0f / 65536.0f);
}

TEST(Linear16, DecodesEveryWordWithEveryExponent) {
  for (unsigned exponent = 0; exponent < 32; ++exponent) {
    for (unsigned word = 0; word < kWords; ++word) {
      ASSERT_EQ(linearToReal(static_cast<uint16_t>(word), static_cast<uint8_t>(exponent), 16, 5),
                expectedLinear(word, exponent, 16, 5))
          << std::hex << word << " with exponent " << exponent;
    }
  }
}

TEST(Linear16, TakesItsMantissaAsSigned) {
  EXPECT_EQ(linearToReal(0x1800, 0x17, 16, 5), 12.0f);
  EXPECT_EQ(linearToReal(0x8000, 0x17, 16, 5), -64.0f);
  EXPECT_EQ(linearToReal(0xFFFF, 0x00, 16, 5), -1.0f);
}

TEST(Linear, IgnoresTheBitsAboveItsWidths) {
  std::mt19937 random(1);
  std::uniform_int_distribution<unsigned> words(0, 0xFFFF);
  std::uniform_int_distribution<unsigned> mantissas(1, 16);
  std::uniform_int_distribution<unsigned> exponents(1, 8);
  for (int i = 0; i < 100000; ++i) {
    const unsigned raw = words(random);
    const unsigned exponent = words(random) % 256;
    const unsigned mantissaBits = mantissas(random);
    const unsigned exponentBits = exponents(random);
    ASSERT_EQ(linearToReal(static_cast<uint16_t>(raw), static_cast<uint8_t>(exponent),
                           static_cast<uint8_t>(mantissaBits), static_cast<uint8_t>(exponentBits)),
              expectedLinear(raw, exponent, mantissaBits, exponentBits))
        << std::hex << raw << ", " << exponent << std::dec << " of " << mantissaBits << " and "
        << exponentBits << " bits";
  }
}

// The smallest exponent with which 10 bits hold the number.
unsigned smallestExponent(unsigned value) {
  unsigned exponent = 0;
  for (unsigned power = 1; value / power > 1023; power *= 2) {
    ++exponent;
  }
  return exponent;
}

TEST(RealToLinear, EncodesEveryNumber) {
  for (unsigned value = 0; value < kWords; ++value) {
    const unsigned exponent = smallestExponent(value);
    const unsigned mantissa = value / (1u << exponent);
    ASSERT_EQ(realToLinear(static_cast<uint16_t>(value)), exponent * 2048 + mantissa) << value;
  }
}

TEST(RealToLinear, LosesLessThanTheUnitOfItsExponent) {
  for (unsigned value = 0; value < kWords; ++value) {
    const float decoded = linear11ToReal(realToLinear(static_cast<uint16_t>(value)));
    ASSERT_LE(decoded, static_cast<float>(value));
    ASSERT_LT(static_cast<float>(value) - decoded,
              static_cast<float>(1u << smallestExponent(value)));
  }
}

TEST(RealToLinear, SendsWhatIsBelow1024AsItIs) {
  EXPECT_EQ(realToLinear(0), 0x0000);
  EXPECT_EQ(realToLinear(1000), 0x03E8);
  EXPECT_EQ(realToLinear(1023), 0x03FF);
  EXPECT_EQ(realToLinear(1024), 0x0A00);
  EXPECT_EQ(realToLinear(20000), 0x2A71);
  EXPECT_EQ(realToLinear(65535), 0x33FF);
}

}  // namespace
