// SPDX-License-Identifier: Apache-2.0
//
// What is made of any image of an identification EEPROM. Places are within it, texts can be
// printed, and a TlvInfo without a fault is what its records build.
#include <algorithm>
#include <string>

#include "fuzz/Require.hpp"
#include "identity/Build.hpp"
#include "identity/Image.hpp"

namespace {

using namespace Identity;

void checkField(const Field& field, View bytes) {
  require(field.offset + field.bytes.size() <= bytes.size(), "fields are within the image");
  require(std::ranges::all_of(field.text, [](char c) { return c >= ' ' && c <= '~'; }),
          "texts can be printed");
}

void checkRebuilt(const Image& image, View bytes) {
  std::vector<TlvRecord> records;
  for (const Field& field : image.fields) {
    records.push_back({static_cast<uint8_t>(std::stoul(field.key, nullptr, 16)), field.bytes});
  }
  const Bytes built = buildTlvInfo(records);
  require(built.size() <= bytes.size() && std::ranges::equal(built, bytes.first(built.size())),
          "a good TlvInfo is what its records build");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const View bytes(data, size);
  const std::optional<Image> image = readImage(bytes);
  if (!image) {
    return 0;
  }
  for (const Field& field : image->fields) {
    checkField(field, bytes);
  }
  for (const Fault& fault : image->faults) {
    require(fault.offset <= size, "faults are within the image");
  }
  if (image->format == Format::kTlvInfo && image->faults.empty()) {
    checkRebuilt(*image, bytes);
  }
  return 0;
}
