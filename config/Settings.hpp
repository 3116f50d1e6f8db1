// SPDX-License-Identifier: Apache-2.0
//
// An object of a JSON file, read key by key. Whoever reads one ends with finish(), which
// refuses the keys that nobody asked for. What does not fit is thrown as a FileError with
// its place in the file and what to write instead.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "config/JsonFile.hpp"

namespace Config {

struct Range {
  uint32_t first;
  uint32_t last;
};

// A value of a file with its place there. The file outlives it.
struct Item {
  const JsonFile& file;
  const rapidjson::Value& value;
  std::string pointer;  // RFC 6901

  [[noreturn]] void fail(const std::string& message) const { file.fail(pointer, message); }

  // The value as a whole number, written as one or as a text like "0x3C".
  [[nodiscard]] uint32_t number(uint32_t least, uint32_t most) const;
  [[nodiscard]] std::string text() const;  // never empty

  // A number, or a text like "0x20" or "0x20-0x2F"; none above `most`.
  [[nodiscard]] Range range(uint32_t most) const;

  // A number, a list of numbers, or a text for its characters; none above `most`.
  [[nodiscard]] std::vector<uint32_t> numbers(uint32_t most) const;

  [[nodiscard]] Item member(std::string_view key, const rapidjson::Value& value) const;
  [[nodiscard]] Item element(rapidjson::SizeType index) const;
};

class Settings {
 public:
  explicit Settings(Item object);

  [[nodiscard]] bool has(std::string_view key) const;
  [[nodiscard]] std::optional<Item> find(std::string_view key);

  // Without a value for `absent` the key is required.
  [[nodiscard]] uint32_t number(std::string_view key, uint32_t least, uint32_t most,
                                std::optional<uint32_t> absent = {});
  [[nodiscard]] double real(std::string_view key, double least, double most, double absent);
  [[nodiscard]] bool flag(std::string_view key, bool absent);
  [[nodiscard]] std::string text(std::string_view key, std::optional<std::string_view> absent = {});

  // One of `choices`; returns its index. Absent: 0.
  [[nodiscard]] size_t choice(std::string_view key, const std::vector<std::string_view>& choices);

  // The elements of a list, the members of an object; none if the key is absent.
  void forEach(std::string_view key, const std::function<void(const Item& element)>& visit);
  void forEachMember(std::string_view key,
                     const std::function<void(const std::string& name, const Item& member)>& visit);

  // Names the key's value, or the whole object if it has no such key.
  [[noreturn]] void fail(std::string_view key, const std::string& message) const;
  void finish() const;

 private:
  [[nodiscard]] Item require(std::string_view key);

  Item object_;
  std::set<std::string, std::less<>> known_;
};

// A whole number in decimal, or in hexadecimal after "0x"; none if the text is no such thing.
[[nodiscard]] std::optional<uint32_t> parseNumber(std::string_view text);

}  // namespace Config
