// SPDX-License-Identifier: Apache-2.0
//
// The format of the IPMI Platform Management FRU Information Storage Definition v1.0 r1.3: a common
// header of eight bytes (§8)
//
//   0  format version
//   1  where areas begin, in units of eight bytes, 0 for none: internal use, chassis info, board
//      info, product info, multirecord
//   6  a zero
//   7  zero checksum
//
// and info areas (§10 to §12): format version, length in units of eight bytes, further bytes, then
// fields up to the byte 0xC1. The area's last byte is its zero checksum. A field is a byte of type
// and length (§13) and as many bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Identity::Fru {

constexpr uint8_t kVersion = 1;
constexpr size_t kUnit = 8;
constexpr size_t kHeaderSize = 8;
constexpr size_t kPadAt = 6;
constexpr size_t kChecksumAt = 7;

constexpr size_t kAreaLengthAt = 1;
constexpr uint8_t kEndOfFields = 0xC1;
constexpr uint8_t kLengthMask = 0x3F;

// Board and product info areas say behind their length in what language their texts are; a chassis
// info area has its type there and is English (§10 to §12, §15).
constexpr size_t kLanguageAt = 2;

constexpr bool isEnglish(uint8_t language) { return language == 0 || language == 25; }

enum class FieldType : uint8_t { kBinary, kBcdPlus, kSixBit, kText };

constexpr uint8_t typeLength(FieldType type, size_t length) {
  return static_cast<uint8_t>(static_cast<size_t>(type) << 6 | length);
}

// The board's time of manufacture: minutes since 1996-01-01T00:00Z, least significant byte first; 0
// for none (§11).
constexpr size_t kDateAt = 3;
constexpr size_t kDateSize = 3;

struct Field {
  std::string_view key;  // in JSON
  std::string_view name;
};

struct Area {
  std::string_view key;  // in JSON, with a dot; empty for the product info area
  std::string_view name;
  size_t offsetAt;  // in the common header
  size_t fieldsAt;  // in the area
  bool hasLanguage;
  bool hasDate;
  std::span<const Field> fields;
};

[[nodiscard]] std::span<const Area> areas();  // those that are read
[[nodiscard]] const Area& boardArea();
[[nodiscard]] const Area& productArea();

}  // namespace Identity::Fru
