// SPDX-License-Identifier: Apache-2.0
//
// The TlvInfo format of the Open Network Install Environment (ONIE): a header of eleven bytes
//
//   0  "TlvInfo" and a zero
//   8  version
//   9  how many bytes of records follow, most significant byte first
//
// and records of type, length and value. The last one is the CRC-32 of all bytes before its value,
// most significant byte first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "identity/Bytes.hpp"

namespace Identity::Tlv {

constexpr std::string_view kMagic{"TlvInfo\0", 8};
constexpr size_t kVersionAt = 8;
constexpr uint8_t kVersion = 1;
constexpr size_t kLengthAt = 9;
constexpr size_t kHeaderSize = 11;
constexpr size_t kMostBytes = UINT16_MAX;  // of records

constexpr size_t kRecordHeaderSize = 2;
constexpr uint8_t kChecksum = 0xFE;  // type
constexpr uint8_t kChecksumSize = 4;

enum class Form { kText, kNumber, kAddress, kBytes };

struct Type {
  uint8_t code;
  Form form;
  size_t least;  // bytes
  size_t most;
  std::string_view name;
};

// Null: the standard does not name it.
[[nodiscard]] const Type* findType(uint8_t code);

[[nodiscard]] constexpr bool fits(const Type& type, size_t length) {
  return length >= type.least && length <= type.most;
}

// "6", "4 to 255": the lengths that fit.
[[nodiscard]] std::string lengthText(const Type& type);

}  // namespace Identity::Tlv
