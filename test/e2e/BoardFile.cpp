// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/BoardFile.hpp"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace E2e {

namespace {

using rapidjson::Value;

std::string textOf(const Value& value) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  value.Accept(writer);
  return text.GetString();
}

// The first object below `value` whose member `key` is `text`; null for none.
const Value* find(const Value& value, const char* key, const std::string& text) {
  if (value.IsObject()) {
    if (value.HasMember(key) && value[key] == text.c_str()) {
      return &value;
    }
    for (const auto& member : value.GetObject()) {
      if (const Value* found = find(member.value, key, text)) {
        return found;
      }
    }
  } else if (value.IsArray()) {
    for (const Value& element : value.GetArray()) {
      if (const Value* found = find(element, key, text)) {
        return found;
      }
    }
  }
  return nullptr;
}

const Value& require(const Value* value, const std::string& what) {
  if (value == nullptr) {
    throw std::invalid_argument("the board has no " + what);
  }
  return *value;
}

}  // namespace

std::string contentsOf(const std::string& path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

BoardFile::BoardFile(const std::string& path) {
  if (board_.Parse(contentsOf(path).c_str()).HasParseError()) {
    throw std::invalid_argument(path + " is no JSON");
  }
}

std::string BoardFile::topology() const { return textOf(board_["topology"]); }

rapidjson::Document BoardFile::describe(const Value& entry) const {
  const std::string label = entry["device"].GetString();
  rapidjson::Document device;
  auto& allocator = device.GetAllocator();
  device.CopyFrom(require(find(board_["topology"], "label", label), label), allocator);
  if (!device.HasMember("driverArgs")) {
    device.AddMember("driverArgs", Value(rapidjson::kObjectType), allocator);
  }
  if (entry.HasMember("args")) {
    for (const auto& argument : entry["args"].GetObject()) {
      device["driverArgs"].RemoveMember(argument.name);
      device["driverArgs"].AddMember(Value(argument.name, allocator),
                                     Value(argument.value, allocator), allocator);
    }
  }
  device.AddMember("name", Value(label.c_str(), allocator), allocator);
  return device;
}

std::string BoardFile::description(const char* list, const std::string& name) const {
  const Value& entry = require(find(board_[list], "name", name), name);
  rapidjson::Document device = describe(entry);
  if (entry.HasMember("modules")) {
    auto& allocator = device.GetAllocator();
    Value texts(rapidjson::kObjectType);
    for (const auto& module : entry["modules"].GetObject()) {
      texts.AddMember(Value(module.name, allocator),
                      Value(textOf(describe(module.value)).c_str(), allocator), allocator);
    }
    device.AddMember("isMultiDevice", true, allocator);
    device.AddMember("multiDeviceArgs", texts, allocator);
  }
  return textOf(device);
}

}  // namespace E2e
