// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace Utils {

// The board's own chips send the most significant byte of a word first, SMBus the least.
constexpr uint16_t swapBytes(uint16_t word) { return static_cast<uint16_t>(word << 8 | word >> 8); }

}  // namespace Utils
