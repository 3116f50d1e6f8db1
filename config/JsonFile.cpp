// SPDX-License-Identifier: Apache-2.0
#include "config/JsonFile.hpp"

#include <algorithm>
#include <vector>

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "config/File.hpp"
#include "config/Schema.hpp"

namespace Config {

namespace {

constexpr size_t kLargest = 64 * 1024 * 1024;  // bytes
constexpr size_t kMaxDepth = 100;
constexpr unsigned kParseFlags = rapidjson::kParseValidateEncodingFlag;

std::string escaped(std::string_view key) {
  std::string text;
  for (const char c : key) {
    text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  }
  return text;
}

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

}  // namespace

std::string pointerTo(std::string_view parent, std::string_view key) {
  return std::string(parent) + "/" + escaped(key);
}

std::string pointerTo(std::string_view parent, size_t index) {
  return std::string(parent) + "/" + std::to_string(index);
}

// Stands between the reader and the document: notes where each token begins and passes it on. A
// token begins at the first character after the one before it that is neither blank, comma nor
// colon.
class JsonFile::Tracker {
 public:
  using Ch = char;

  Tracker(JsonFile& file, const rapidjson::MemoryStream& stream, rapidjson::Document& document)
      : file_(file), stream_(stream), document_(document) {}

  bool Null() { return value() && document_.Null(); }
  bool Bool(bool b) { return value() && document_.Bool(b); }
  bool Int(int i) { return value() && document_.Int(i); }
  bool Uint(unsigned u) { return value() && document_.Uint(u); }
  bool Int64(int64_t i) { return value() && document_.Int64(i); }
  bool Uint64(uint64_t u) { return value() && document_.Uint64(u); }
  bool Double(double d) { return value() && document_.Double(d); }
  bool RawNumber(const Ch* text, rapidjson::SizeType length, bool copy) {
    return value() && document_.RawNumber(text, length, copy);
  }
  bool String(const Ch* text, rapidjson::SizeType length, bool copy) {
    return value() && document_.String(text, length, copy);
  }
  bool StartObject() { return open(false) && document_.StartObject(); }
  bool StartArray() { return open(true) && document_.StartArray(); }
  bool EndObject(rapidjson::SizeType members) { return close() && document_.EndObject(members); }
  bool EndArray(rapidjson::SizeType elements) { return close() && document_.EndArray(elements); }

  bool Key(const Ch* text, rapidjson::SizeType length, bool copy) {
    key_ = tokenStart();
    const std::string_view name(text, length);
    levels_.back().child = pointerTo(levels_.back().pointer, name);
    const auto earlier = file_.positions_.find(levels_.back().child);
    if (earlier != file_.positions_.end()) {
      throw FileError(file_.placeAt(key_), "the key \"" + std::string(name) +
                                               "\" stands here a second time; the first is at " +
                                               file_.placeAt(earlier->second.key).text());
    }
    return document_.Key(text, length, copy);
  }

 private:
  // An object or array that is open: its own pointer, and that of its current child.
  struct Level {
    std::string pointer;
    std::string child;
    bool array;
    size_t next = 0;
  };

  size_t tokenStart() {
    const size_t start = file_.text_.find_first_not_of(" \t\r\n,:", end_);
    end_ = stream_.Tell();
    return start;
  }

  // Notes the value that begins here and returns its pointer.
  std::string note() {
    const size_t start = tokenStart();
    if (levels_.empty()) {
      file_.positions_[""] = {start, start};
      return "";
    }
    Level& level = levels_.back();
    if (level.array) {
      level.child = pointerTo(level.pointer, level.next++);
      key_ = start;
    }
    file_.positions_[level.child] = {key_, start};
    return level.child;
  }

  bool value() {
    note();
    return true;
  }

  bool open(bool array) {
    std::string pointer = note();
    if (levels_.size() == kMaxDepth) {
      file_.fail(pointer, "values nest more than " + std::to_string(kMaxDepth) + " levels deep");
    }
    levels_.push_back({std::move(pointer), "", array});
    return true;
  }

  bool close() {
    levels_.pop_back();
    end_ = stream_.Tell();
    return true;
  }

  JsonFile& file_;
  const rapidjson::MemoryStream& stream_;
  rapidjson::Document& document_;
  std::vector<Level> levels_;
  size_t end_ = 0;
  size_t key_ = 0;
};

JsonFile::JsonFile(std::string name, std::string text)
    : name_(std::move(name)), text_(std::move(text)) {
  rapidjson::MemoryStream stream(text_.data(), text_.size());
  rapidjson::ParseResult result;
  auto generate = [&](rapidjson::Document& document) {
    Tracker tracker(*this, stream, document);
    rapidjson::Reader reader;
    result = reader.Parse<kParseFlags>(stream, tracker);
    return !result.IsError();
  };
  document_.Populate(generate);
  if (result.IsError()) {
    throw FileError(placeAt(result.Offset()), rapidjson::GetParseError_En(result.Code()));
  }
}

JsonFile JsonFile::load(const std::string& path) { return parse(path, readFile(path, kLargest)); }

JsonFile JsonFile::parse(std::string name, std::string text) {
  return JsonFile(std::move(name), std::move(text));
}

Place JsonFile::placeOf(std::string_view pointer) const {
  return placeAt(positionOf(pointer).value);
}

Place JsonFile::keyPlaceOf(std::string_view pointer) const {
  return placeAt(positionOf(pointer).key);
}

void JsonFile::fail(std::string_view pointer, const std::string& message) const {
  throw FileError(placeOf(pointer), message, pointer);
}

void JsonFile::validate(std::string_view schemaText) const { validateBySchema(*this, schemaText); }

Place JsonFile::placeAt(size_t offset) const {
  const std::string_view before = std::string_view(text_).substr(0, offset);
  const size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
  const std::string_view line = before.substr(lineStart);
  return {name_, 1 + static_cast<size_t>(std::count(before.begin(), before.end(), '\n')),
          1 + static_cast<size_t>(std::count_if(line.begin(), line.end(), startsCharacter))};
}

const JsonFile::Position& JsonFile::positionOf(std::string_view pointer) const {
  static constexpr Position kStart{0, 0};
  for (std::string at(pointer);; at.resize(at.rfind('/'))) {
    const auto found = positions_.find(at);
    if (found != positions_.end()) {
      return found->second;
    }
    if (at.find('/') == std::string::npos) {
      return kStart;
    }
  }
}

}  // namespace Config
