// SPDX-License-Identifier: Apache-2.0
//
// The identification memories of supplies, as bytes.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Doubles {

inline std::string byte(size_t value) { return std::string(1, static_cast<char>(value)); }

// A TlvInfo EEPROM of these records. The length in its header is that of the records unless another
// one is given.
using TlvRecords = std::vector<std::pair<unsigned, std::string>>;

inline std::string tlvHeader(unsigned length) {
  return std::string("TlvInfo\0\x01", 9) + byte(length / 256) + byte(length % 256);
}
inline std::string tlvBody(const TlvRecords& records) {
  std::string body;
  for (const auto& [type, text] : records) {
    body += byte(type) + byte(text.size()) + text;
  }
  return body;
}
inline std::string tlvInfo(const TlvRecords& records) {
  const std::string body = tlvBody(records);
  return tlvHeader(static_cast<unsigned>(body.size())) + body;
}

// A field of a FRU area: its type and length, and its text.
inline std::string fruField(const std::string& text, unsigned type = 3) {
  return byte(type << 6 | text.size()) + text;
}

// A FRU EEPROM whose product area, with these fields, begins at the eighth byte times `at`.
inline std::string fruMemory(const std::vector<std::string>& fields, size_t at = 1) {
  std::string memory = std::string("\x01\0\0\0", 4) + byte(at);
  memory.resize(at * 8, '\0');
  memory += std::string("\x01\0\x19", 3);
  for (const std::string& field : fields) {
    memory += field;
  }
  return memory;
}

}  // namespace Doubles
