// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>

#include "identity/Build.hpp"
#include "identity/Checksum.hpp"
#include "identity/Text.hpp"
#include "identity/TlvFormat.hpp"
#include "identity/Value.hpp"

namespace Identity {
namespace {

using Tlv::Form;
using Tlv::Type;

// As many bytes as the type has.
Bytes numberBytes(const Type& type, const Config::Item& value) {
  const uint32_t number = value.number(0, (1u << (8 * type.least)) - 1);
  Bytes bytes;
  for (size_t i = type.least; i-- > 0;) {
    bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
  }
  return bytes;
}

Bytes addressBytes(const Config::Item& value) {
  const std::string text = value.text();
  std::istringstream parts(text);
  Bytes bytes;
  for (std::string part; std::getline(parts, part, ':');) {
    bytes.push_back(static_cast<uint8_t>(std::strtoul(part.c_str(), nullptr, 16)));
  }
  std::string lower = text;
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  // The text of the bytes is the one that was written, or it was no address.
  if (hexText(bytes, ':') != lower) {
    value.fail("write an address, like \"02:0a:0c:00:01:ff\"");
  }
  return bytes;
}

Bytes textBytes(const Config::Item& value) {
  const std::string text = plainTextOf(value);
  return {text.begin(), text.end()};
}

// A list of bytes is taken as it is, whatever the type.
Bytes valueOf(const Type& type, const Config::Item& value) {
  if (value.value.IsArray()) {
    return bytesOf(value);
  }
  switch (type.form) {
    case Form::kText:
      return textBytes(value);
    case Form::kNumber:
      return numberBytes(type, value);
    case Form::kAddress:
      return addressBytes(value);
    case Form::kBytes:
      break;
  }
  return bytesOf(value);
}

TlvRecord recordOf(const std::string& key, const Config::Item& value) {
  const std::optional<uint32_t> code = Config::parseNumber(key);
  if (!code || *code >= Tlv::kChecksum) {
    value.fail(fmt::format("\"{}\" is no type; write one from \"0x00\" to \"0xFD\"", key));
  }
  const Type* const type = Tlv::findType(static_cast<uint8_t>(*code));
  Bytes bytes = type == nullptr ? bytesOf(value) : valueOf(*type, value);
  if (bytes.size() > UINT8_MAX) {
    value.fail("at most 255 bytes");
  }
  if (type != nullptr && !Tlv::fits(*type, bytes.size())) {
    value.fail(fmt::format("{} (\"{}\") has {} bytes, not {}", type->name, key,
                           Tlv::lengthText(*type), bytes.size()));
  }
  return {static_cast<uint8_t>(*code), std::move(bytes)};
}

void append(Bytes& image, const TlvRecord& record) {
  image.push_back(record.type);
  image.push_back(static_cast<uint8_t>(record.value.size()));
  image.insert(image.end(), record.value.begin(), record.value.end());
}

size_t sizeOf(const std::vector<TlvRecord>& records) {
  size_t size = Tlv::kRecordHeaderSize + Tlv::kChecksumSize;
  for (const TlvRecord& record : records) {
    size += Tlv::kRecordHeaderSize + record.value.size();
  }
  return size;
}

}  // namespace

Bytes buildTlvInfo(const std::vector<TlvRecord>& records) {
  const size_t length = sizeOf(records);
  Bytes image(Tlv::kMagic.begin(), Tlv::kMagic.end());
  image.insert(image.end(),
               {Tlv::kVersion, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length)});
  for (const TlvRecord& record : records) {
    append(image, record);
  }
  image.insert(image.end(), {Tlv::kChecksum, Tlv::kChecksumSize});
  const uint32_t crc = crc32(image);
  for (int shift = 24; shift >= 0; shift -= 8) {
    image.push_back(static_cast<uint8_t>(crc >> shift));
  }
  return image;
}

Bytes buildTlvInfo(Config::Settings& settings) {
  std::vector<TlvRecord> records;
  settings.forEachMember("tlvInfo", [&](const std::string& type, const Config::Item& value) {
    records.push_back(recordOf(type, value));
  });
  const size_t size = sizeOf(records);
  if (size > Tlv::kMostBytes) {
    settings.fail("tlvInfo", fmt::format("{} bytes of records; a TlvInfo holds {} at most", size,
                                         Tlv::kMostBytes));
  }
  return buildTlvInfo(records);
}

}  // namespace Identity
