// SPDX-License-Identifier: Apache-2.0
#include "Drivers/PmbusFormat.hpp"

#include <cmath>

namespace Drivers {

namespace {

constexpr uint8_t kMantissaBits = 11;
constexpr uint8_t kExponentBits = 5;
constexpr unsigned kLargestMantissa = 0x3FF;  // the largest positive one

constexpr int signExtend(unsigned value, unsigned bits) {
  const unsigned sign = 1u << (bits - 1);
  const unsigned low = value & ((sign << 1) - 1);
  return static_cast<int>(low ^ sign) - static_cast<int>(sign);
}

}  // namespace

float linearToReal(uint16_t raw, uint8_t exponent, uint8_t mantissaBits, uint8_t exponentBits) {
  const int mantissa = signExtend(raw, mantissaBits);
  const int power = signExtend(exponent, exponentBits);
  return static_cast<float>(mantissa) * std::pow(2.0f, static_cast<float>(power));
}

float linear11ToReal(uint16_t word) {
  return linearToReal(word, static_cast<uint8_t>(word >> kMantissaBits), kMantissaBits,
                      kExponentBits);
}

uint16_t realToLinear(uint16_t value) {
  unsigned mantissa = value;
  unsigned exponent = 0;
  while (mantissa > kLargestMantissa) {
    mantissa >>= 1;
    ++exponent;
  }
  return static_cast<uint16_t>(exponent << kMantissaBits | mantissa);
}

}  // namespace Drivers
