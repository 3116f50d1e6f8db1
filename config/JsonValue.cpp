// SPDX-License-Identifier: Apache-2.0
#include "config/JsonValue.hpp"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Config {

const rapidjson::Value* member(const rapidjson::Value* object, const char* key) {
  if (object == nullptr || !object->IsObject()) {
    return nullptr;
  }
  const auto found = object->FindMember(key);
  return found == object->MemberEnd() ? nullptr : &found->value;
}

std::string jsonText(const rapidjson::Value& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return buffer.GetString();
}

}  // namespace Config
