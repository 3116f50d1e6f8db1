// SPDX-License-Identifier: Apache-2.0
#include "identity/Text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace Identity {

std::string hexText(View bytes, char separator) {
  std::string text;
  for (const uint8_t byte : bytes) {
    if (!text.empty()) {
      text += separator;
    }
    text += fmt::format("{:02x}", byte);
  }
  return text;
}

std::string plainText(View bytes) {
  return std::ranges::all_of(bytes, isPrintable) ? std::string(bytes.begin(), bytes.end())
                                                 : hexText(bytes);
}

std::string wideText(View bytes) {
  if (bytes.size() % 2 != 0) {
    return hexText(bytes);
  }
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 2) {
    const bool shown = bytes[i + 1] == 0 && isPrintable(bytes[i]);
    text += shown ? static_cast<char>(bytes[i]) : '?';
  }
  return text;
}

std::string numberText(View bytes) {
  if (bytes.empty() || bytes.size() > sizeof(uint64_t)) {
    return hexText(bytes);
  }
  uint64_t number = 0;
  for (const uint8_t byte : bytes) {
    number = number << 8 | byte;
  }
  return std::to_string(number);
}

std::string bcdPlusText(View bytes) {
  constexpr std::string_view kCharacters = "0123456789 -.???";
  std::string text;
  for (const uint8_t byte : bytes) {
    text += kCharacters[byte >> 4];
    text += kCharacters[byte & 0xF];
  }
  return text;
}

std::string sixBitText(View bytes) {
  constexpr unsigned kWidth = 6;
  std::string text;
  unsigned bits = 0;
  unsigned waiting = 0;
  for (const uint8_t byte : bytes) {
    bits |= static_cast<unsigned>(byte) << waiting;
    for (waiting += 8; waiting >= kWidth; waiting -= kWidth, bits >>= kWidth) {
      text += static_cast<char>(' ' + (bits & 0x3F));
    }
  }
  return text;
}

}  // namespace Identity
