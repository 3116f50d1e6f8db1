// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "identity/Build.hpp"
#include "identity/Checksum.hpp"
#include "identity/TlvFormat.hpp"
#include "identity/Value.hpp"

namespace Identity {
namespace {

TlvRecord recordOf(const std::string& type, const Config::Item& value) {
  const std::optional<uint32_t> number = Config::parseNumber(type);
  if (!number || *number >= Tlv::kChecksum) {
    value.fail(fmt::format("\"{}\" is no type; write one from \"0x00\" to \"0xFD\"", type));
  }
  Bytes bytes = bytesOf(value);
  if (bytes.size() > UINT8_MAX) {
    value.fail("at most 255 bytes");
  }
  return {static_cast<uint8_t>(*number), std::move(bytes)};
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
