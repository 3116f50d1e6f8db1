// SPDX-License-Identifier: Apache-2.0
#include "identity/Image.hpp"

#include <algorithm>

#include "identity/FruFormat.hpp"
#include "identity/TlvFormat.hpp"

namespace Identity {
namespace {

bool beginsAsTlvInfo(View bytes) {
  const View magic = bytes.first(std::min(bytes.size(), Tlv::kMagic.size()));
  return !magic.empty() && Tlv::kMagic.starts_with(std::string(magic.begin(), magic.end()));
}

}  // namespace

std::string_view nameOf(Format format) { return format == Format::kTlvInfo ? "TlvInfo" : "FRU"; }

std::optional<Image> readImage(View bytes) {
  if (beginsAsTlvInfo(bytes)) {
    return readTlvInfo(bytes);
  }
  if (!bytes.empty() && bytes.front() == Fru::kVersion) {
    return readFru(bytes);
  }
  return std::nullopt;
}

}  // namespace Identity
