// SPDX-License-Identifier: Apache-2.0
//
// What an EEPROM holds, from a file or built from readable JSON.
//
// Settings, at most one of
//   "file"      a file with the bytes, relative to the board file
//   "contents"  { offset: value }; a list or a text fills the bytes from there on, and a text
//               stands for its characters, even "12"
//   "tlvInfo"   the ONIE TlvInfo format
//   "fru"       board and product info areas of the IPMI FRU format; identity/Build.hpp has the
//               keys of both
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

// `size` bytes; what is not told is 0xFF, as erased.
[[nodiscard]] std::vector<uint8_t> eepromImage(Settings& settings, size_t size);

}  // namespace SmbusService::Board
