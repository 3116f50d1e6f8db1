// SPDX-License-Identifier: Apache-2.0
//
// Images from readable JSON. What does not fit is a Config::FileError with its place.
//
//   "tlvInfo"  { type: value }, in the order given; a type is "0x00" to "0xFD", a value a text, a
//              number or a list of bytes. The standard's number types take a number, which gets the
//              type's length, its address type a text like "02:0a:0c:00:01:ff", its text types
//              printable ASCII; its types have its lengths. Header and checksum are added.
//   "fru"      the texts of the product info area, printable ASCII: "manufacturer", "name", "part",
//              "version", "serial", "asset", "fileId"; and "board" with those of the board info
//              area: "manufacturer", "name", "serial", "part", "fileId", and "date" for the time of
//              manufacture, "2026-11-21T08:00Z". A "board" alone makes no product info area.
#pragma once

#include <string>
#include <vector>

#include "config/Settings.hpp"
#include "identity/Bytes.hpp"

namespace Identity {

struct TlvRecord {
  uint8_t type = 0;
  Bytes value;  // 255 at most

  bool operator==(const TlvRecord&) const = default;
};

// The records' bytes, with theirs and the checksum's lengths, are 65,535 at most.
[[nodiscard]] Bytes buildTlvInfo(const std::vector<TlvRecord>& records);

// Of the object's key "tlvInfo".
[[nodiscard]] Bytes buildTlvInfo(Config::Settings& settings);

// Of the object's key "fru".
[[nodiscard]] Bytes buildFru(Config::Settings& settings);

}  // namespace Identity
