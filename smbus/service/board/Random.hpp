// SPDX-License-Identifier: Apache-2.0
//
// Chance that is the same every time: numbers computed from a seed and a position, not drawn one
// after the other, so that nobody's look at one changes another's.
#pragma once

#include <cstdint>
#include <string_view>

namespace SmbusService::Board {

// The finalizer of SplitMix64 (Steele, Lea, Flood 2014): every bit of the result depends on every
// bit of `value`.
[[nodiscard]] constexpr uint64_t mix(uint64_t value) {
  value += 0x9E3779B97F4A7C15;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

// A seed of its own for each name.
[[nodiscard]] constexpr uint64_t seedFor(uint64_t seed, std::string_view name) {
  for (const char c : name) {
    seed = mix(seed ^ static_cast<uint8_t>(c));
  }
  return mix(seed);
}

// From -1 up to 1.
[[nodiscard]] constexpr double deviation(uint64_t seed, uint64_t position) {
  constexpr double kHalf = static_cast<double>(uint64_t{1} << 52);
  return static_cast<double>(mix(seed ^ mix(position)) >> 11) / kHalf - 1;
}

}  // namespace SmbusService::Board
