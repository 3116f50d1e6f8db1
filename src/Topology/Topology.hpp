// SPDX-License-Identifier: Apache-2.0
//
// The board's hardware tree: controllers, accelerators, buses, muxes, devices and components, read
// from the topology text and kept for the process's life. Nodes are read-only once built; parents
// hold their children by shared pointer. docs/topology.md describes the text.
//
// Each fromJSON builds a node and everything below it from one JSON object. A text that breaks the
// format's rules stops the process on a check.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Drivers/Drivers.hpp"
#include "Topology/AhamAddress.hpp"
#include "Topology/Visitor.hpp"
#include "Utils/Json.hpp"

namespace Topology {

using Value = rapidjson::Value;
using Document = rapidjson::Document;

// Every node lets a visitor walk the tree below it and then itself. True: go on. False: stop; what
// the visitor looked for is found, and on the way up each ancestor is visited once more.
class Node {
 public:
  virtual ~Node() = default;
  virtual bool accept(TopologyVisitor* visitor) const = 0;
};

// A controller at the top of the tree.
class MediumNode : public Node {
 public:
  bool accept(TopologyVisitor* visitor) const override = 0;

  std::string ham;  // the type of the HAM through which devices below are reached
};

class Component : public Node {
 public:
  static std::shared_ptr<Component> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t uid = 0;
};

class Device : public Node {
 public:
  static std::shared_ptr<Device> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t did = 0;
  std::shared_ptr<Drivers::DriverArgs> driverArgs;  // null when the text names no driver
  std::vector<std::shared_ptr<Component>> components;
};

class Bus;

class Mux : public Node {
 public:
  static std::shared_ptr<Mux> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t did = 0;                                 // of the mux chip
  std::map<uint32_t, std::shared_ptr<Bus>> busses;  // by the value that selects the channel
};

class Bus : public Node {
 public:
  static std::shared_ptr<Bus> fromJSON(const Value& json);
  // Fills the bus part of a node: id, devices, muxes.
  static void init(std::shared_ptr<Bus> bus, const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t id = 0;
  std::vector<std::shared_ptr<Device>> devices;
  std::vector<std::shared_ptr<Mux>> muxes;
};

class Accelerator : public Node {
 public:
  static std::shared_ptr<Accelerator> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t id = 0;
  std::map<uint32_t, std::shared_ptr<Bus>> busses;
};

class SCD : public MediumNode {
 public:
  static std::shared_ptr<SCD> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  uint32_t pci = 0;
  std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
};

class Celestica : public MediumNode {
 public:
  static std::shared_ptr<Celestica> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  std::map<uint32_t, std::shared_ptr<Accelerator>> accelerators;
};

class LinuxFs : public MediumNode {
 public:
  static std::shared_ptr<LinuxFs> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  std::vector<std::shared_ptr<Device>> devices;
};

// The controllers that are a bus themselves.
class I2C : public MediumNode, public Bus {
 public:
  static std::shared_ptr<I2C> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;

  bool simulated = false;
};

class IOPort : public MediumNode, public Bus {
 public:
  static std::shared_ptr<IOPort> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;
};

class PLM : public MediumNode, public Bus {
 public:
  static std::shared_ptr<PLM> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;
};

class SccSpi : public MediumNode, public Bus {
 public:
  static std::shared_ptr<SccSpi> fromJSON(const Value& json);
  bool accept(TopologyVisitor* visitor) const override;
};

// The whole tree.
class Topology : public Node {
 public:
  // The caller owns the tree.
  static Topology* fromJSON(const Document& json);
  bool accept(TopologyVisitor* visitor) const override;

  std::vector<std::shared_ptr<MediumNode>> nodes;
};

// The current tree (null before the first load), the text it was built from, and its labelled
// devices; a label given twice means the later device.
extern Topology* _topology;
extern std::string _topology_json;
extern std::map<std::string, std::shared_ptr<Device>> _topology_index;

// Fills an address from the "address" object of a device. "addrSize" is stored in two bits before
// it is checked, so 4 fails and 5 and 6 pass as 1 and 2.
void fillAddressFromJSON(const Value& value, AhamAddress& addr);

// Makes the tree of `json` the current one. A text equal to the current one keeps it. Returns 0, 3
// when the text is not JSON (the current tree stays) or 6 when no tree could be built.
int loadTopology(const char* json);

// The first device of the current tree with this number, or null.
const Device* findDevice(unsigned did);

// The device with this label, or null; the index owns it.
const Device* getDeviceByLabel(const char* label);

// Whether a text is a device description rather than a label: it begins with an opening brace.
bool isDeviceObject(const char* text);

}  // namespace Topology
