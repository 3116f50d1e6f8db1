// SPDX-License-Identifier: Apache-2.0
//
// A JSON object on one line, written key by key.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <string_view>
#include <vector>

namespace Config {

class JsonLine {
 public:
  JsonLine() { writer_.StartObject(); }

  void key(std::string_view name) { writer_.Key(name.data(), lengthOf(name)); }
  void text(std::string_view value) { writer_.String(value.data(), lengthOf(value)); }
  void number(double value) { writer_.Double(value); }
  void whole(uint64_t value) { writer_.Uint64(value); }

  void put(std::string_view name, std::string_view value) { key(name), text(value); }
  void put(std::string_view name, const char* value) { put(name, std::string_view(value)); }
  void put(std::string_view name, const std::string& value) { put(name, std::string_view(value)); }
  void put(std::string_view name, double value) { key(name), number(value); }
  void put(std::string_view name, uint64_t value) { key(name), whole(value); }
  void put(std::string_view name, bool value) { key(name), writer_.Bool(value); }

  // A list, with one call of `each` for each element of `values`; `each` writes one value.
  template <typename Values, typename Each>
  void list(std::string_view name, const Values& values, Each each) {
    key(name);
    writer_.StartArray();
    for (const auto& value : values) {
      each(value);
    }
    writer_.EndArray();
  }
  void list(std::string_view name, const std::vector<std::string>& texts) {
    list(name, texts, [this](const std::string& value) { text(value); });
  }

  // An object, whose keys `fill` writes.
  template <typename Fill>
  void object(Fill fill) {
    writer_.StartObject();
    fill();
    writer_.EndObject();
  }

  // Ends the object; of the line's end there is nothing yet.
  [[nodiscard]] std::string take() {
    writer_.EndObject();
    return {buffer_.GetString(), buffer_.GetSize()};
  }

 private:
  static rapidjson::SizeType lengthOf(std::string_view value) {
    return static_cast<rapidjson::SizeType>(value.size());
  }

  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_{buffer_};
};

}  // namespace Config
