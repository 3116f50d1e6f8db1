// SPDX-License-Identifier: Apache-2.0
#include "tools/Board.hpp"

#include <map>
#include <utility>

#include <fmt/format.h>

#include "config/JsonValue.hpp"
#include "embedded/kBoardSchema.hpp"
#include "tools/ArgumentRules.hpp"

namespace Nimbo {

namespace {

using Config::member;
using rapidjson::Document;
using rapidjson::Value;

// The keys of the file that hold no list of entries.
bool isList(const Value& value, const std::string& key) {
  return value.IsArray() && key != "topology" && key != "plugins";
}

void set(Document& document, Value& object, const Value& name, const Value& value) {
  auto& allocator = document.GetAllocator();
  object.RemoveMember(name);
  object.AddMember(Value(name, allocator), Value(value, allocator), allocator);
}

// Null: nothing to set.
void setAll(Document& document, Value& object, const Value* members) {
  if (members != nullptr) {
    for (const auto& each : members->GetObject()) {
      set(document, object, each.name, each.value);
    }
  }
}

}  // namespace

Board::Board(Config::JsonFile file)
    : file_(std::make_unique<const Config::JsonFile>(std::move(file))) {
  file_->validate(Embedded::kBoardSchema);
  devices_ = std::make_unique<const TopologyIndex>(*file_);
  check();
}

Board Board::load(const std::string& path) { return Board(Config::JsonFile::load(path)); }

Board Board::parse(const std::string& name, const std::string& text) {
  return Board(Config::JsonFile::parse(name, text));
}

const char* Board::name() const { return file_->document()["board"].GetString(); }

std::string Board::topology() const { return Config::jsonText(file_->document()["topology"]); }

std::vector<std::string> Board::plugins() const {
  std::vector<std::string> paths;
  if (const Value* const list = member(&file_->document(), "plugins")) {
    for (const Value& path : list->GetArray()) {
      paths.emplace_back(path.GetString());
    }
  }
  return paths;
}

std::vector<Entry> Board::entries(const std::string& kind) const {
  std::vector<Entry> entries;
  const Value* const list = member(&file_->document(), kind.c_str());
  for (rapidjson::SizeType i = 0; list != nullptr && i < list->Size(); ++i) {
    const Value& node = (*list)[i];
    entries.push_back({node["name"].GetString(), fmt::format("/{}/{}", kind, i), &node,
                       devices_->find(node["device"].GetString())});
  }
  return entries;
}

std::string Board::description(const Entry& entry, const Value* further) const {
  Document document;
  document.CopyFrom(*entry.device->node, document.GetAllocator());
  auto& allocator = document.GetAllocator();
  document.RemoveMember("label");
  document.RemoveMember("components");
  document.AddMember("name", Value(entry.device->label(), allocator), allocator);
  if (!document.HasMember("driverArgs")) {
    document.AddMember("driverArgs", Value(rapidjson::kObjectType), allocator);
  }
  setAll(document, document["driverArgs"], member(entry.node, "args"));
  setAll(document, document["driverArgs"], further);
  return Config::jsonText(document);
}

void Board::check() const {
  for (const auto& list : file_->document().GetObject()) {
    const std::string kind = list.name.GetString();
    if (!isList(list.value, kind)) {
      continue;
    }
    std::map<std::string, std::string> seen;
    for (const Entry& entry : entries(kind)) {
      const auto [first, isNew] = seen.emplace(entry.name, entry.pointer);
      if (!isNew) {
        file_->fail(entry.pointer + "/name",
                    fmt::format("the name \"{}\" is taken already, at {}", entry.name,
                                file_->placeOf(first->second).text()));
      }
      if (entry.device == nullptr) {
        file_->fail(entry.pointer + "/device",
                    fmt::format("no device of the topology has the label \"{}\"; the labels are {}",
                                (*entry.node)["device"].GetString(), devices_->labels()));
      }
      checkArguments(*file_,
                     {entry.device->driver(), kind, entry.pointer, member(entry.node, "args"),
                      member(entry.device->node, "driverArgs")});
    }
  }
}

}  // namespace Nimbo
