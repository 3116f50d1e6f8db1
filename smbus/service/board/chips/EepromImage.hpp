// SPDX-License-Identifier: Apache-2.0
//
// What an EEPROM holds, from a file or built from readable JSON.
//
// Settings, at most one of
//   "file"      a file with the bytes, relative to the board file
//   "contents"  { offset: value }; a list or a text fills the bytes from there on, and a text
//               stands for its characters, even "12"
//   "tlvInfo"   { type: value }, values likewise: the ONIE TlvInfo format, in the order given;
//               the checksum (type 0xFE) is added
//   "fru"       a product info area of the IPMI FRU format (Platform Management FRU 1.0):
//               "manufacturer", "name", "part", "version", "serial"
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

// `size` bytes; what is not told is 0xFF, as erased.
[[nodiscard]] std::vector<uint8_t> eepromImage(Settings& settings, size_t size);

}  // namespace SmbusService::Board
