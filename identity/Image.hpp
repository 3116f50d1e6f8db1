// SPDX-License-Identifier: Apache-2.0
//
// What an image of an identification EEPROM says, and what is wrong with it. Any bytes may be
// given: a fault is a result, nothing is read past the end, and what can be read is read. Bytes
// behind the image, as an EEPROM has them, are left alone.
//
// Of a FRU the header and the chassis, board and product info areas are looked at; the internal use
// area and the multirecords are not, but for where they begin.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "identity/Bytes.hpp"

namespace Identity {

enum class Format { kTlvInfo, kFru };

[[nodiscard]] std::string_view nameOf(Format format);

struct Field {
  size_t offset;     // of the field's first byte, that of its type
  std::string key;   // as in the JSON of identity/Build.hpp: "0x23", "serial", "board.serial"
  std::string name;  // the standard's; may be empty
  Bytes bytes;       // as they stand in the image
  std::string text;  // for people, printable ASCII
};

struct Fault {
  size_t offset;  // the image's size for what should come after its end
  std::string message;
};

struct Image {
  Format format;
  std::vector<Field> fields;  // in the image's order; a FRU's empty ones are left out
  std::vector<Fault> faults;
};

[[nodiscard]] Image readTlvInfo(View bytes);
[[nodiscard]] Image readFru(View bytes);

// None: the bytes begin as neither format. A beginning of TlvInfo's magic is a cut-off TlvInfo.
[[nodiscard]] std::optional<Image> readImage(View bytes);

}  // namespace Identity
