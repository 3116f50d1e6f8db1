// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/BoardSnapshot.hpp"

#include <algorithm>
#include <bit>
#include <cctype>
#include <map>

#include <fmt/format.h>

#include "tools/recording/TopologyNode.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;

constexpr uint32_t kLeastAddress = 0x08;  // the ones below are no device's (SMBus 3.0 appendix C)
constexpr size_t kMostInARow = 16;        // registers, for the reader's sake

std::string lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

// The mux whose chip this device is; null: it is none.
const Value* muxOf(const Value& segment, const Value& device) {
  const Value* found = nullptr;
  forEach(segment, "muxes", [&](const Value& mux) {
    found = mux["did"].GetUint() == device["did"].GetUint() ? &mux : found;
  });
  return found;
}

}  // namespace

BoardSnapshot::BoardSnapshot(Open open) : open_(std::move(open)), writer_(buffer_) {
  writer_.SetIndent(' ', 2);
  writer_.SetFormatOptions(rapidjson::kFormatSingleLineArray);
}

void BoardSnapshot::put(const char* key, const std::string& text) {
  writer_.Key(key);
  writer_.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

std::string BoardSnapshot::take(const std::string& board, const Value& topology) {
  writer_.StartObject();
  put("board", board);
  writer_.Key("buses");
  writer_.StartArray();
  std::for_each(topology.Begin(), topology.End(),
                [this](const Value& controller) { takeController(controller); });
  writer_.EndArray();
  writer_.EndObject();
  return std::string(buffer_.GetString(), buffer_.GetSize()) + "\n";
}

void BoardSnapshot::takeController(const Value& controller) {
  const std::string type = lower(controller["type"].GetString());
  if (controller.HasMember("id")) {
    takeBus(fmt::format("{}.bus{}", type, numberOf(controller, "id")), controller);
  }
  forEach(controller, "accelerators", [&](const Value& accelerator) {
    forEach(accelerator, "busses", [&](const Value& bus) {
      takeBus(fmt::format("{}{}.accel{}.bus{}", type, numberOf(controller, "pci"),
                          numberOf(accelerator, "id"), numberOf(bus, "id")),
              bus);
    });
  });
}

void BoardSnapshot::takeBus(const std::string& name, const Value& bus) {
  writer_.StartObject();
  put("name", name);
  takeChips(bus);
  writer_.EndObject();
}

void BoardSnapshot::takeChips(const Value& segment) {
  writer_.Key("chips");
  writer_.StartArray();
  std::map<uint32_t, std::string> chips;  // who is at an address
  forEach(segment, "devices", [&](const Value& device) {
    const uint32_t address = addressOf(device);
    const auto [first, isNew] = chips.emplace(address, device["label"].GetString());
    if (const Value* mux = muxOf(segment, device)) {
      takeMux(device, *mux);
    } else if (address < kLeastAddress) {
      outcomes_.push_back({device["label"].GetString(), 0, "left out: it has no chip"});
    } else if (!isNew) {
      outcomes_.push_back(
          {device["label"].GetString(), 0, "left out: it is the chip of " + first->second});
    } else {
      takeDevice(device);
    }
  });
  writer_.EndArray();
}

void BoardSnapshot::beginChip(const Value& device, const char* model) {
  writer_.StartObject();
  put("label", device["label"].GetString());
  put("model", model);
  put("address", fmt::format("0x{:02X}", addressOf(device)));
}

void BoardSnapshot::takeMux(const Value& device, const Value& mux) {
  beginChip(device, "pca9548");
  writer_.Key("channels");
  writer_.StartArray();
  forEach(mux, "busses", [&](const Value& channel) {
    writer_.StartObject();
    writer_.Key("channel");
    writer_.Int(std::countr_zero(numberOf(channel, "id")));
    takeChips(channel);
    writer_.EndObject();
  });
  writer_.EndArray();
  writer_.EndObject();
  outcomes_.push_back({device["label"].GetString(), 0, ""});
}

void BoardSnapshot::takeDevice(const Value& device) {
  SnapshotOutcome outcome{device["label"].GetString(), 0, ""};
  RegisterSnapshot snapshot;
  if (const auto source = open_(device)) {
    snapshot = takeSnapshot(device["driver"].GetString(), *source);
    outcome.remark = snapshot.values.empty() ? "no answer" : "";
  } else {
    outcome.remark = "refused by the library";
  }
  outcome.registers = snapshot.values.size();
  if (!snapshot.leftOut.empty()) {
    outcome.remark = "left out: " + snapshot.leftOut;
  }
  if (!snapshot.values.empty()) {
    beginChip(device, "register");
    putRegisters(snapshot);
    writer_.EndObject();
  }
  outcomes_.push_back(std::move(outcome));
}

void BoardSnapshot::putRegisters(const RegisterSnapshot& snapshot) {
  writer_.Key("size");
  writer_.Uint(snapshot.values.rbegin()->first + 1);
  if (snapshot.width == 16) {
    writer_.Key("width");
    writer_.Uint(snapshot.width);
    put("byteOrder", "little");  // as the words were read
  }
  writer_.Key("registers");
  writer_.StartObject();
  for (auto it = snapshot.values.begin(); it != snapshot.values.end();) {
    writer_.Key(fmt::format("0x{:02X}", it->first).c_str());
    writer_.StartArray();
    unsigned next = it->first;
    for (size_t i = 0; i < kMostInARow && it != snapshot.values.end() && it->first == next;
         ++i, ++next, ++it) {
      writer_.String(fmt::format("0x{:0{}X}", it->second, snapshot.width / 4).c_str());
    }
    writer_.EndArray();
  }
  writer_.EndObject();
}

}  // namespace Nimbo
