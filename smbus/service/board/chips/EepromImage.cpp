// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/EepromImage.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>

#include "config/File.hpp"
#include "identity/Build.hpp"
#include "identity/Value.hpp"

namespace SmbusService::Board {
namespace {

using Identity::Bytes;

Bytes fileImage(Settings& settings, size_t size) {
  const Item item = *settings.find("file");
  const auto path = std::filesystem::path(item.file.name()).parent_path() / item.text();
  try {
    const std::string contents = Config::readFile(path, size);
    return {contents.begin(), contents.end()};
  } catch (const Config::FileError& error) {
    item.fail(error.what());
  }
}

Bytes fruImage(Settings& settings, size_t /*size*/) { return Identity::buildFru(settings); }

Bytes tlvImage(Settings& settings, size_t /*size*/) { return Identity::buildTlvInfo(settings); }

Bytes contentsImage(Settings& settings, size_t size) {
  Bytes image(size, 0xFF);
  settings.forEachMember("contents", [&](const std::string& offset, const Item& value) {
    const std::optional<uint32_t> first = parseNumber(offset);
    const Bytes bytes = Identity::bytesOf(value);
    if (!first) {
      value.fail(fmt::format("\"{}\" is no offset; write one like \"0x10\"", offset));
    }
    if (*first > size || bytes.size() > size - *first) {
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
    if (!settings.has(source.key)) {
      continue;
    }
    if (only != nullptr) {
      settings.fail(source.key, fmt::format("there is \"{}\" already", only->key));
    }
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
