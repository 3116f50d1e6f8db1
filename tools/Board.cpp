// SPDX-License-Identifier: Apache-2.0
#include "tools/Board.hpp"

#include <algorithm>
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

constexpr const char* kSlotList = "slots";
constexpr const char* kSupplyList = "psus";
constexpr const char* kContainer = "MultiSlot";

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

std::vector<Entry> Board::fansOf(const Entry& supply) const {
  std::vector<Entry> fans;
  const Value* const list = member(supply.node, "fans");
  for (rapidjson::SizeType i = 0; list != nullptr && i < list->Size(); ++i) {
    fans.push_back({fmt::format("{}.fan{}", supply.name, i + 1),
                    fmt::format("{}/fans/{}", supply.pointer, i), &(*list)[i], supply.device});
  }
  return fans;
}

Document Board::describe(const TopologyDevice& device, const Value* args) const {
  Document document;
  auto& allocator = document.GetAllocator();
  document.CopyFrom(*device.node, allocator);
  document.RemoveMember("label");
  document.RemoveMember("components");
  document.AddMember("name", Value(device.label(), allocator), allocator);
  if (!document.HasMember("driverArgs")) {
    document.AddMember("driverArgs", Value(rapidjson::kObjectType), allocator);
  }
  setAll(document, document["driverArgs"], args);
  return document;
}

std::string Board::description(const Entry& entry, const Value* further) const {
  Document document = describe(*entry.device, member(entry.node, "args"));
  auto& allocator = document.GetAllocator();
  setAll(document, document["driverArgs"], further);
  if (const Value* const modules = member(entry.node, "modules")) {
    Value texts(rapidjson::kObjectType);
    for (const auto& module : modules->GetObject()) {
      const std::string text = Config::jsonText(describe(
          *devices_->find(module.value["device"].GetString()), member(&module.value, "args")));
      texts.AddMember(Value(module.name, allocator), Value(text.c_str(), allocator), allocator);
    }
    document.AddMember("isMultiDevice", true, allocator);
    document.AddMember("multiDeviceArgs", texts, allocator);
  }
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
      check(entry, kind);
    }
  }
}

void Board::check(const Entry& entry, const std::string& kind) const {
  checkPart(kind, entry.pointer, *entry.node);
  if (kind == kSlotList) {
    checkModules(entry);
  } else if (kind == kSupplyList) {
    checkSupply(entry);
  }
}

const TopologyDevice* Board::deviceOf(const Value& node, const std::string& pointer) const {
  const char* const label = node["device"].GetString();
  const TopologyDevice* const device = devices_->find(label);
  if (device == nullptr) {
    file_->fail(pointer + "/device",
                fmt::format("no device of the topology has the label \"{}\"; the labels are {}",
                            label, devices_->labels()));
  }
  return device;
}

void Board::checkPart(const std::string& kind, const std::string& pointer,
                      const Value& node) const {
  const TopologyDevice* const device = deviceOf(node, pointer);
  checkArguments(
      *file_, *devices_,
      {device->driver(), kind, pointer, member(&node, "args"), member(device->node, "driverArgs")});
}

// A container has modules, and no other device has.
void Board::checkModules(const Entry& entry) const {
  const bool isContainer = std::string(entry.device->driver()) == kContainer;
  const Value* const modules = member(entry.node, "modules");
  if (isContainer != (modules != nullptr)) {
    file_->fail(entry.pointer,
                isContainer
                    ? fmt::format("the key \"modules\" is missing; the driver {} expects the kinds "
                                  "of module that fit into the slot",
                                  kContainer)
                    : fmt::format("the driver {} takes no \"modules\"; {} does",
                                  entry.device->driver(), kContainer));
  }
  if (modules != nullptr) {
    for (const auto& module : modules->GetObject()) {
      checkPart(kSlotList, Config::pointerTo(entry.pointer + "/modules", module.name.GetString()),
                module.value);
    }
  }
}

void Board::checkSupply(const Entry& entry) const {
  const Value* const slot = member(entry.node, "slot");
  const auto slots = entries(kSlotList);
  if (slot != nullptr && std::ranges::find(slots, slot->GetString(), &Entry::name) == slots.end()) {
    file_->fail(entry.pointer + "/slot",
                fmt::format("no slot has the name \"{}\"", slot->GetString()));
  }
  for (const Entry& fan : fansOf(entry)) {
    checkArguments(*file_, *devices_,
                   {fan.device->driver(), "fans", fan.pointer, member(fan.node, "args"),
                    member(fan.device->node, "driverArgs")});
  }
}

}  // namespace Nimbo
