// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "config/JsonFile.hpp"
#include "config/Settings.hpp"
#include "identity/Build.hpp"
#include "identity/Image.hpp"

namespace TestSupport {

using Identity::Bytes;
using Identity::Image;

using Builder = Bytes (*)(Config::Settings& settings);

// Quotes are written ' here.
inline Bytes built(Builder build, std::string json) {
  for (char& c : json) {
    if (c == '\'') {
      c = '"';
    }
  }
  const Config::JsonFile file = Config::JsonFile::parse("eeprom.json", json);
  Config::Settings settings(Config::Item{file, file.document(), ""});
  return build(settings);
}
inline Bytes tlvInfo(const std::string& records) {
  return built(Identity::buildTlvInfo, "{'tlvInfo': " + records + "}");
}
inline Bytes fru(const std::string& fields) {
  return built(Identity::buildFru, "{'fru': " + fields + "}");
}

// "0x0013: message", a line a fault.
inline std::string faultsOf(const Image& image) {
  std::string lines;
  for (const Identity::Fault& fault : image.faults) {
    char offset[16];
    std::snprintf(offset, sizeof offset, "0x%04zX: ", fault.offset);
    lines += offset + fault.message + "\n";
  }
  return lines;
}

// "key=text" of each field, a blank between them.
inline std::string fieldsOf(const Image& image) {
  std::string words;
  for (const Identity::Field& field : image.fields) {
    words += (words.empty() ? "" : " ") + field.key + "=" + field.text;
  }
  return words;
}

}  // namespace TestSupport
