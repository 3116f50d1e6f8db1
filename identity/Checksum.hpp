// SPDX-License-Identifier: Apache-2.0
//
// The checksums of the two formats.
#pragma once

#include "identity/Bytes.hpp"

namespace Identity {

// CRC-32 of IEEE 802.3, as TlvInfo has it.
[[nodiscard]] uint32_t crc32(View bytes);

// The byte that brings the sum of all to 0 modulo 256, as FRU has it.
[[nodiscard]] uint8_t zeroChecksum(View bytes);

}  // namespace Identity
