// SPDX-License-Identifier: Apache-2.0
#include "tools/TopologyIndex.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "config/JsonValue.hpp"

namespace Nimbo {

using Config::member;
using Config::pointerTo;
using rapidjson::Value;

namespace {

constexpr std::array<std::string_view, 2> kMuxDrivers = {"GenericSmbusMux", "PCA9548"};

// What nodes hold further nodes, and the number that must differ among them; null where another
// check sees to that.
constexpr struct {
  const char* key;
  const char* id;
} kContainers[] = {{"accelerators", "id"}, {"busses", "id"}, {"muxes", nullptr}};

}  // namespace

TopologyIndex::TopologyIndex(const Config::JsonFile& file) : file_(file) {
  visitList(file.document()["topology"], "/topology", nullptr);
}

const TopologyDevice* TopologyIndex::find(const std::string& label) const {
  const auto found = byLabel_.find(label);
  return found == byLabel_.end() ? nullptr : &found->second;
}

std::string TopologyIndex::labels() const {
  std::string text;
  for (const auto& [label, device] : byLabel_) {
    text += (text.empty() ? "" : ", ") + label;
  }
  return text;
}

void TopologyIndex::visit(const Value& node, const std::string& pointer) {
  if (const Value* devices = member(&node, "devices")) {
    addDevices(*devices, pointer + "/devices");
  }
  checkMuxes(node, pointer);
  for (const auto& container : kContainers) {
    if (const Value* list = member(&node, container.key)) {
      visitList(*list, pointerTo(pointer, container.key), container.id);
    }
  }
}

void TopologyIndex::visitList(const Value& list, const std::string& pointer, const char* id) {
  if (id != nullptr) {
    checkOnce(list, pointer, id);
  }
  for (rapidjson::SizeType i = 0; i < list.Size(); ++i) {
    visit(list[i], pointerTo(pointer, size_t{i}));
  }
}

void TopologyIndex::addDevices(const Value& devices, const std::string& pointer) {
  for (rapidjson::SizeType i = 0; i < devices.Size(); ++i) {
    const TopologyDevice device{pointerTo(pointer, size_t{i}), &devices[i]};
    const auto [did, newDid] = pointerByDid_.emplace(device.did(), device.pointer);
    if (!newDid) {
      file_.fail(device.pointer + "/did",
                 fmt::format("the did {} belongs to another device already, at {}", device.did(),
                             file_.placeOf(did->second).text()));
    }
    const auto [label, newLabel] = byLabel_.emplace(device.label(), device);
    if (!newLabel) {
      file_.fail(device.pointer + "/label",
                 fmt::format("the label \"{}\" belongs to another device already, at {}",
                             device.label(), file_.placeOf(label->second.pointer).text()));
    }
  }
}

void TopologyIndex::checkMuxes(const Value& bus, const std::string& pointer) const {
  const Value* muxes = member(&bus, "muxes");
  for (rapidjson::SizeType i = 0; muxes != nullptr && i < muxes->Size(); ++i) {
    const std::string place = pointerTo(pointer + "/muxes", size_t{i}) + "/did";
    const unsigned did = (*muxes)[i]["did"].GetUint();
    const Value* devices = member(&bus, "devices");
    const auto isChip = [did](const Value& device) { return device["did"].GetUint() == did; };
    const Value* chip =
        devices == nullptr ? nullptr : std::find_if(devices->Begin(), devices->End(), isChip);
    if (chip == nullptr || chip == devices->End()) {
      file_.fail(place,
                 fmt::format("the mux has no chip: no device of its bus has the did {}", did));
    }
    const std::string_view driver = (*chip)["driver"].GetString();
    if (std::find(kMuxDrivers.begin(), kMuxDrivers.end(), driver) == kMuxDrivers.end()) {
      file_.fail(place, fmt::format("device {} is no mux: its driver is {}, not one of {}", did,
                                    driver, fmt::join(kMuxDrivers, ", ")));
    }
  }
}

void TopologyIndex::checkOnce(const Value& list, const std::string& pointer, const char* id) const {
  std::map<unsigned, rapidjson::SizeType> seen;
  for (rapidjson::SizeType i = 0; i < list.Size(); ++i) {
    const unsigned number = list[i][id].GetUint();
    const auto [first, isNew] = seen.emplace(number, i);
    if (!isNew) {
      file_.fail(pointerTo(pointer, size_t{i}) + "/" + id,
                 fmt::format("the {} {} is taken already, at {}", id, number,
                             file_.placeOf(pointerTo(pointer, size_t{first->second})).text()));
    }
  }
}

}  // namespace Nimbo
