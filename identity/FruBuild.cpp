// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "identity/Build.hpp"
#include "identity/Checksum.hpp"
#include "identity/FruFormat.hpp"
#include "identity/FruTime.hpp"
#include "identity/Value.hpp"

namespace Identity {
namespace {

using Fru::FieldType;

void addField(Bytes& area, Config::Settings& fields, std::string_view key) {
  const std::optional<Config::Item> value = fields.find(key);
  const std::string text = value ? plainTextOf(*value) : "";
  // A text of one byte could not be told from the end of the fields.
  if (text.size() == 1 || text.size() > Fru::kLengthMask) {
    fields.fail(key, fmt::format("write 2 to {} characters, or leave it out", Fru::kLengthMask));
  }
  area.push_back(Fru::typeLength(FieldType::kText, text.size()));
  area.insert(area.end(), text.begin(), text.end());
}

void addDate(Bytes& area, Config::Settings& fields) {
  constexpr std::string_view kKey = "date";
  const std::optional<uint32_t> minutes =
      fields.has(kKey) ? Fru::parseTime(fields.text(kKey)) : uint32_t{0};
  if (!minutes) {
    fields.fail(kKey,
                "write a time of 1996 to 2027 in UTC, like \"2026-11-21T08:00Z\", or leave it out");
  }
  for (size_t i = 0; i < Fru::kDateSize; ++i) {
    area.push_back(static_cast<uint8_t>(*minutes >> (8 * i)));
  }
}

// Whoever gave the settings finishes them.
Bytes buildArea(const Fru::Area& format, Config::Settings& settings) {
  Bytes area = {Fru::kVersion, 0, 0};  // length; language, English
  if (format.hasDate) {
    addDate(area, settings);
  }
  for (const Fru::Field& field : format.fields) {
    addField(area, settings, field.key);
  }
  area.push_back(Fru::kEndOfFields);
  while (area.size() % Fru::kUnit != Fru::kUnit - 1) {
    area.push_back(0);
  }
  area[Fru::kAreaLengthAt] = static_cast<uint8_t>((area.size() + 1) / Fru::kUnit);
  area.push_back(zeroChecksum(area));
  return area;
}

// Areas follow the header in the order in which they are added.
class Image {
 public:
  void add(const Fru::Area& format, Config::Settings& settings) {
    const Bytes area = buildArea(format, settings);
    bytes_[format.offsetAt] = static_cast<uint8_t>(bytes_.size() / Fru::kUnit);
    bytes_.insert(bytes_.end(), area.begin(), area.end());
  }
  Bytes finish() {
    bytes_[Fru::kChecksumAt] = zeroChecksum(View(bytes_).first(Fru::kChecksumAt));
    return std::move(bytes_);
  }

 private:
  Bytes bytes_ = {Fru::kVersion, 0, 0, 0, 0, 0, 0, 0};
};

}  // namespace

Bytes buildFru(Config::Settings& settings) {
  const Config::Item object = *settings.find("fru");
  Config::Settings product(object);
  Image image;
  const std::optional<Config::Item> board = product.find("board");
  if (board) {
    Config::Settings fields(*board);
    image.add(Fru::boardArea(), fields);
    fields.finish();
  }
  if (!board || object.value.MemberCount() > 1) {
    image.add(Fru::productArea(), product);
  }
  product.finish();
  return image.finish();
}

}  // namespace Identity
