// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusLinear.hpp"

#include <algorithm>
#include <cmath>

namespace SmbusService::Board {
namespace {

constexpr int kLeastExponent = -16;
constexpr int kMostExponent = 15;
constexpr double kLeastMantissa = -1024;
constexpr double kMostMantissa = 1023;

// The low `bits` of `value` as a two's-complement number.
int signedBits(unsigned value, unsigned bits) {
  const unsigned sign = 1u << (bits - 1);
  return static_cast<int>((value & (2 * sign - 1)) ^ sign) - static_cast<int>(sign);
}

}  // namespace

uint16_t toLinear11(double value) {
  int exponent = kLeastExponent;
  const auto mantissa = [&] { return std::round(std::ldexp(value, -exponent)); };
  const auto fits = [&] { return mantissa() >= kLeastMantissa && mantissa() <= kMostMantissa; };
  while (!fits() && exponent < kMostExponent) {
    ++exponent;
  }
  const auto bits = static_cast<unsigned>(
      static_cast<int>(std::clamp(mantissa(), kLeastMantissa, kMostMantissa)));
  return static_cast<uint16_t>((static_cast<unsigned>(exponent) & 0x1Fu) << 11 | (bits & 0x7FFu));
}

double fromLinear11(uint16_t word) {
  return std::ldexp(signedBits(word, 11), signedBits(static_cast<unsigned>(word) >> 11, 5));
}

uint16_t toLinear16(double value, uint8_t voutMode) {
  const double mantissa = std::round(std::ldexp(value, -signedBits(voutMode, 5)));
  return static_cast<uint16_t>(std::clamp(mantissa, 0.0, double{UINT16_MAX}));
}

double fromLinear16(uint16_t word, uint8_t voutMode) {
  return std::ldexp(word, signedBits(voutMode, 5));
}

}  // namespace SmbusService::Board
