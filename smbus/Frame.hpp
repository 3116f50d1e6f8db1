// SPDX-License-Identifier: Apache-2.0
//
// How a message travels between the SMBus service and its clients: a 4-byte length, most
// significant byte first, then that many bytes of one message. Both ends use this header.
#pragma once

#include <cstddef>
#include <cstdint>

namespace SmbusFrame {

inline constexpr size_t kHeaderSize = 4;
inline constexpr uint32_t kMaxMessage = 1024 * 1024;  // bytes, the header not counted

// Writes the header of a message of `length` bytes: kHeaderSize bytes at `header`.
constexpr void putLength(char* header, uint32_t length) {
  for (size_t i = 0; i < kHeaderSize; ++i) {
    header[i] = static_cast<char>(static_cast<uint8_t>(length >> (8 * (kHeaderSize - 1 - i))));
  }
}

// The length that the kHeaderSize bytes at `header` announce; it may exceed kMaxMessage.
[[nodiscard]] constexpr uint32_t announcedLength(const char* header) {
  uint32_t length = 0;
  for (size_t i = 0; i < kHeaderSize; ++i) {
    length = length << 8 | static_cast<uint8_t>(header[i]);
  }
  return length;
}

}  // namespace SmbusFrame
