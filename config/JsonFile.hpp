// SPDX-License-Identifier: Apache-2.0
//
// A JSON file that knows where each of its keys and values stands, so that whoever finds fault with
// a value (the parser, a schema, the program itself) names the place:
//
//   const Config::JsonFile file = Config::JsonFile::load(path);   // cannot be read, is not JSON
//   file.validate(kSchema);                                       // is not what the schema asks
//   for if (!known(label)) file.fail("/fans/0/device", "no such device");
//
// Values are named by JSON pointers (RFC 6901): "" is the whole document, "/fans/0/device" a value
// in it; '~' and '/' in a key are written "~0" and "~1" (see pointerTo). Every failure is a
// FileError.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include <rapidjson/document.h>

#include "config/FileError.hpp"

namespace Config {

// `parent` + "/" + `key`, with the key escaped; and the same for an element of an array.
std::string pointerTo(std::string_view parent, std::string_view key);
std::string pointerTo(std::string_view parent, size_t index);

class JsonFile {
 public:
  // Reads and parses a file. Beyond JSON's own rules a key may stand once only in its object, texts
  // must be UTF-8, and values may nest 100 levels deep.
  static JsonFile load(const std::string& path);

  // Parses a text; `name` stands for the file in messages.
  static JsonFile parse(std::string name, std::string text);

  // Lives as long as this object; do not keep references to its values over a move of it.
  const rapidjson::Document& document() const { return document_; }
  const std::string& text() const { return text_; }
  const std::string& name() const { return name_; }

  // Where the value begins; for a pointer that names nothing, the nearest value above it.
  Place placeOf(std::string_view pointer) const;

  // Where the value's key begins; for an element of an array as placeOf.
  Place keyPlaceOf(std::string_view pointer) const;

  // Throws the FileError "place of the value: message".
  [[noreturn]] void fail(std::string_view pointer, const std::string& message) const;

  // Checks the document against a JSON schema (draft 7; references within the schema only) and
  // throws one FileError for the first violation in the file, with what the schema wants there:
  // the missing key, the keys or values that it knows, the type, the range, and the schema's
  // "description" of the value as the remedy. The schema is the program's own: one that is not JSON
  // is a std::logic_error.
  void validate(std::string_view schemaText) const;

 private:
  // Byte offsets into the text. An element of an array has no key: `key` is then `value`.
  struct Position {
    size_t key;
    size_t value;
  };
  class Tracker;

  JsonFile(std::string name, std::string text);
  Place placeAt(size_t offset) const;
  const Position& positionOf(std::string_view pointer) const;

  std::string name_;
  std::string text_;
  rapidjson::Document document_;
  std::unordered_map<std::string, Position> positions_;
};

}  // namespace Config
