// SPDX-License-Identifier: Apache-2.0
//
// A live board as a virtual board's file: its muxes, and each device as a chip whose registers hold
// what they held. docs/virtual-board.md describes the file.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>

#include "tools/recording/RegisterSnapshot.hpp"

namespace Nimbo {

// What became of a device.
struct SnapshotOutcome {
  std::string label;
  size_t registers = 0;
  std::string remark;  // why there are none; empty: there are some, or it is a mux
};

class BoardSnapshot {
 public:
  // Opens the registers of a device of the topology; null: the library refused it.
  using Open = std::function<std::unique_ptr<RegisterSource>(const rapidjson::Value& device)>;

  explicit BoardSnapshot(Open open);

  // Reads every device of a topology that the board description's check has accepted, and returns
  // the text of the file.
  std::string take(const std::string& board, const rapidjson::Value& topology);

  const std::vector<SnapshotOutcome>& outcomes() const { return outcomes_; }

 private:
  void takeController(const rapidjson::Value& controller);
  void takeBus(const std::string& name, const rapidjson::Value& bus);
  void takeChips(const rapidjson::Value& segment);
  void takeMux(const rapidjson::Value& device, const rapidjson::Value& mux);
  void takeDevice(const rapidjson::Value& device);
  void beginChip(const rapidjson::Value& device, const char* model);
  void putRegisters(const RegisterSnapshot& snapshot);
  void put(const char* key, const std::string& text);

  const Open open_;
  rapidjson::StringBuffer buffer_;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer_;
  std::vector<SnapshotOutcome> outcomes_;
};

}  // namespace Nimbo
