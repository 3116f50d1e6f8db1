// SPDX-License-Identifier: Apache-2.0
//
// The devices of a board description's topology, by label, and the checks that no schema can make:
// what the library would stop the process for, or silently take for something else.
#pragma once

#include <map>
#include <string>

#include <rapidjson/document.h>

#include "config/JsonFile.hpp"

namespace Nimbo {

// A device of the topology. Borrows from the file.
struct TopologyDevice {
  std::string pointer;
  const rapidjson::Value* node;

  unsigned did() const { return (*node)["did"].GetUint(); }
  const char* label() const { return (*node)["label"].GetString(); }
  const char* driver() const { return (*node)["driver"].GetString(); }
};

class TopologyIndex {
 public:
  // Reads the "topology" of a file that its schema has accepted. Throws Config::FileError for a
  // did, label, bus or accelerator that is there twice and for a mux without its chip.
  explicit TopologyIndex(const Config::JsonFile& file);

  // Null when no device has this label. Lives as long as the index.
  const TopologyDevice* find(const std::string& label) const;

  // All labels, for messages.
  std::string labels() const;

 private:
  void visit(const rapidjson::Value& node, const std::string& pointer);
  void visitList(const rapidjson::Value& list, const std::string& pointer, const char* id);
  void addDevices(const rapidjson::Value& devices, const std::string& pointer);
  void checkMuxes(const rapidjson::Value& bus, const std::string& pointer) const;
  void checkOnce(const rapidjson::Value& list, const std::string& pointer, const char* id) const;

  const Config::JsonFile& file_;
  std::map<std::string, TopologyDevice> byLabel_;
  std::map<unsigned, std::string> pointerByDid_;
};

}  // namespace Nimbo
