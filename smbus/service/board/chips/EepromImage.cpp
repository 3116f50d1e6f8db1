// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/EepromImage.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <string_view>

namespace SmbusService::Board {
namespace {

using Bytes = std::vector<uint8_t>;

void append(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

// A text stands for its characters here even if it looks like a number, as a serial number does.
Bytes bytesOf(const Item& item) {
  Bytes bytes;
  if (item.value.IsString()) {
    append(bytes, item.text());
    return bytes;
  }
  for (const uint32_t number : item.numbers(UINT8_MAX)) {
    bytes.push_back(static_cast<uint8_t>(number));
  }
  return bytes;
}

Bytes fileImage(Settings& settings, size_t /*size*/) {
  const Item item = *settings.find("file");
  const auto path = std::filesystem::path(item.file.name()).parent_path() / item.text();
  std::ifstream file(path, std::ios::binary);
  if (!file) item.fail(fmt::format("cannot read {}", path.string()));
  return {std::istreambuf_iterator<char>(file), {}};
}

// CRC-32 of IEEE 802.3.
uint32_t crc32(const Bytes& bytes) {
  uint32_t crc = UINT32_MAX;
  for (const uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

constexpr size_t kTlvHeader = 11;
constexpr size_t kTlvLength = 9;  // two bytes, most significant first
constexpr uint8_t kTlvChecksum = 0xFE;

void addTlv(Bytes& image, const std::string& type, const Item& value) {
  const std::optional<uint32_t> number = parseNumber(type);
  if (!number || *number >= kTlvChecksum) {
    value.fail(fmt::format("\"{}\" is no type; write one from \"0x00\" to \"0xFD\"", type));
  }
  const Bytes bytes = bytesOf(value);
  if (bytes.size() > UINT8_MAX) value.fail("at most 255 bytes");
  image.push_back(static_cast<uint8_t>(*number));
  image.push_back(static_cast<uint8_t>(bytes.size()));
  image.insert(image.end(), bytes.begin(), bytes.end());
}

void finishTlv(Bytes& image) {
  image.insert(image.end(), {kTlvChecksum, 4});
  const size_t length = image.size() + 4 - kTlvHeader;
  image[kTlvLength] = static_cast<uint8_t>(length >> 8);
  image[kTlvLength + 1] = static_cast<uint8_t>(length);
  const uint32_t crc = crc32(image);
  for (int shift = 24; shift >= 0; shift -= 8) image.push_back(static_cast<uint8_t>(crc >> shift));
}

Bytes tlvImage(Settings& settings, size_t /*size*/) {
  constexpr uint8_t kVersion = 1;
  Bytes image = {'T', 'l', 'v', 'I', 'n', 'f', 'o', 0, kVersion, 0, 0};
  settings.forEachMember(
      "tlvInfo", [&](const std::string& type, const Item& value) { addTlv(image, type, value); });
  finishTlv(image);
  return image;
}

// The byte that brings the sum of all to 0.
uint8_t zeroChecksum(Bytes::const_iterator begin, Bytes::const_iterator end) {
  return static_cast<uint8_t>(-std::accumulate(begin, end, 0));
}

constexpr std::array<std::string_view, 5> kFruFields = {"manufacturer", "name", "part", "version",
                                                        "serial"};
constexpr uint8_t kFruText = 0xC0;  // type/length: 8-bit text
constexpr size_t kFruLongest = 63;
constexpr uint8_t kFruEnd = 0xC1;
constexpr size_t kFruUnit = 8;  // offsets and lengths count in these

void addFruField(Bytes& area, Settings& fields, std::string_view name) {
  const std::string text = fields.text(name, "");
  // A text of one byte could not be told from the end of the fields.
  if (text.size() == 1 || text.size() > kFruLongest) {
    fields.fail(name, fmt::format("write 2 to {} characters, or leave it out", kFruLongest));
  }
  area.push_back(static_cast<uint8_t>(kFruText | text.size()));
  append(area, text);
}

Bytes fruImage(Settings& settings, size_t /*size*/) {
  Bytes area = {1, 0, 0};  // format version, length, language
  Settings fields(*settings.find("fru"));
  for (const std::string_view name : kFruFields) addFruField(area, fields, name);
  fields.finish();
  area.insert(area.end(), {kFruText, kFruText, kFruEnd});  // no asset tag, no file id
  while (area.size() % kFruUnit != kFruUnit - 1) area.push_back(0);
  area[1] = static_cast<uint8_t>((area.size() + 1) / kFruUnit);
  area.push_back(zeroChecksum(area.begin(), area.end()));

  Bytes image = {1, 0, 0, 0, 1, 0, 0};  // the product area follows at once
  image.push_back(zeroChecksum(image.begin(), image.end()));
  image.insert(image.end(), area.begin(), area.end());
  return image;
}

Bytes contentsImage(Settings& settings, size_t size) {
  Bytes image(size, 0xFF);
  settings.forEachMember("contents", [&](const std::string& offset, const Item& value) {
    const std::optional<uint32_t> first = parseNumber(offset);
    const Bytes bytes = bytesOf(value);
    if (!first || *first > size || bytes.size() > size - *first) {
      value.fail(fmt::format("{} bytes at \"{}\" do not fit; the EEPROM has {}", bytes.size(),
                             offset, size));
    }
    std::ranges::copy(bytes, image.begin() + *first);
  });
  return image;
}

struct Source {
  const char* key;
  Bytes (*build)(Settings& settings, size_t size);
};

constexpr std::array kSources = {
    Source{"contents", contentsImage},
    Source{"file", fileImage},
    Source{"fru", fruImage},
    Source{"tlvInfo", tlvImage},
};

const Source& sourceOf(const Settings& settings) {
  const Source* only = nullptr;
  for (const Source& source : kSources) {
    if (!settings.has(source.key)) continue;
    if (only != nullptr)
      settings.fail(source.key, fmt::format("there is \"{}\" already", only->key));
    only = &source;
  }
  return only == nullptr ? kSources.front() : *only;
}

}  // namespace

std::vector<uint8_t> eepromImage(Settings& settings, size_t size) {
  const Source& source = sourceOf(settings);
  Bytes image = source.build(settings, size);
  if (image.size() > size) {
    settings.fail(source.key, fmt::format("{} bytes; the EEPROM has {}", image.size(), size));
  }
  image.resize(size, 0xFF);
  return image;
}

}  // namespace SmbusService::Board
