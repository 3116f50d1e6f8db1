// SPDX-License-Identifier: Apache-2.0
//
// Bytes for people, in printable ASCII whatever they are.
#pragma once

#include <string>

#include "identity/Bytes.hpp"

namespace Identity {

[[nodiscard]] constexpr bool isPrintable(uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

// The characters if all can be printed, else as hexText.
[[nodiscard]] std::string plainText(View bytes);

// "00 1a ff".
[[nodiscard]] std::string hexText(View bytes, char separator = ' ');

// The number whose most significant byte comes first, of up to eight bytes; more are as hexText.
[[nodiscard]] std::string numberText(View bytes);

// FRU §13.1: digits, blank, dash and period in half a byte, the upper half first; '?' for a value
// that is reserved.
[[nodiscard]] std::string bcdPlusText(View bytes);

// UTF-16, each unit's least significant byte first; '?' for what is not printable ASCII. An odd
// number of bytes is as hexText.
[[nodiscard]] std::string wideText(View bytes);

// FRU §13.2: four characters in three bytes, from the least significant bits on.
[[nodiscard]] std::string sixBitText(View bytes);

}  // namespace Identity
