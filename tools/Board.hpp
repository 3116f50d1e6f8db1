// SPDX-License-Identifier: Apache-2.0
//
// A board description: the topology, which the library is started with, and the named logical
// devices of the board, each a few arguments on top of a device of the topology. The one source for
// both is the file (boards/halvorsa/README.md describes it); this class joins them to the device
// descriptions that the library's pl_X_add functions take.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <rapidjson/document.h>

#include "config/JsonFile.hpp"
#include "tools/TopologyIndex.hpp"

namespace Nimbo {

// A named logical device. Borrows from its board.
struct Entry {
  std::string name;
  std::string pointer;  // where the entry stands in the file
  const rapidjson::Value* node;
  const TopologyDevice* device;

  // A number of the entry itself ("alert"); the file's check has seen to it that it is there.
  double number(const char* key) const { return (*node)[key].GetDouble(); }
};

class Board {
 public:
  // Reads and checks a file; every fault is a Config::FileError with its place.
  static Board load(const std::string& path);
  static Board parse(const std::string& name, const std::string& text);

  const char* name() const;

  // What pl_X_init takes.
  std::string topology() const;

  // The libraries to load besides the driver library, as dlopen(3) takes them.
  std::vector<std::string> plugins() const;

  // The entries of one list of the file, "fans" for instance, in its order; empty when the file has
  // no such list.
  std::vector<Entry> entries(const std::string& kind) const;

  // The fans in a supply, "psu1.fan1" and so on for the supply "psu1".
  std::vector<Entry> fansOf(const Entry& supply) const;

  // What pl_X_add takes: the topology's device with the entry's arguments merged over its own, and
  // the device's label as the name of its simulation file, which all entries of a device share.
  // Members of `further` win over both. A slot with "modules" becomes a container of their
  // descriptions.
  std::string description(const Entry& entry, const rapidjson::Value* further = nullptr) const;

  Config::Place place(const Entry& entry) const { return file_->placeOf(entry.pointer); }

 private:
  explicit Board(Config::JsonFile file);
  void check() const;
  void check(const Entry& entry, const std::string& kind) const;
  void checkPart(const std::string& kind, const std::string& pointer,
                 const rapidjson::Value& node) const;
  void checkModules(const Entry& entry) const;
  void checkSupply(const Entry& entry) const;
  const TopologyDevice* deviceOf(const rapidjson::Value& node, const std::string& pointer) const;
  rapidjson::Document describe(const TopologyDevice& device, const rapidjson::Value* args) const;

  // On the heap: entries and devices point into them while a board may move.
  std::unique_ptr<const Config::JsonFile> file_;
  std::unique_ptr<const TopologyIndex> devices_;
};

}  // namespace Nimbo
