// SPDX-License-Identifier: Apache-2.0
#include "identity/Checksum.hpp"

#include <numeric>

namespace Identity {

uint32_t crc32(View bytes) {
  uint32_t crc = UINT32_MAX;
  for (const uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
  }
  return ~crc;
}

uint8_t zeroChecksum(View bytes) {
  return static_cast<uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

}  // namespace Identity
