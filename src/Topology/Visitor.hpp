// SPDX-License-Identifier: Apache-2.0
//
// What walks the topology. A walk is depth first, children before their parent; a bus visits its
// devices before its muxes, and a controller that is a bus is visited as a bus and then as itself.
#pragma once

#include <cstdint>

namespace Topology {

class Component;
class Device;
class Mux;
class Bus;
class Accelerator;
class SCD;
class I2C;
class IOPort;
class Celestica;
class PLM;
class LinuxFs;
class SccSpi;
class Topology;

// Each visit returns whether the walk is to go on. After a false every ancestor of that node is
// still visited, nearest first, with its result ignored: so a visitor sees the whole path of what
// it has found. Visitors live on the stack and are never deleted through this class.
class TopologyVisitor {
 public:
  virtual bool visit(const Component*) { return true; }
  virtual bool visit(const Device*) = 0;
  virtual bool visit(const Mux*) { return true; }
  virtual bool visit(const Bus*) { return true; }
  virtual bool visit(const Accelerator*) { return true; }
  virtual bool visit(const SCD*) { return true; }
  virtual bool visit(const I2C*) { return true; }
  virtual bool visit(const IOPort*) { return true; }
  virtual bool visit(const Celestica*) { return true; }
  virtual bool visit(const PLM*) { return true; }
  virtual bool visit(const LinuxFs*) { return true; }
  virtual bool visit(const SccSpi*) { return true; }
  virtual bool visit(const Topology*) { return true; }

 protected:
  ~TopologyVisitor() = default;
};

// Looks for the first device with a number.
class SearchDeviceVisitor final : public TopologyVisitor {
 public:
  explicit SearchDeviceVisitor(uint32_t number) : did(number) {}

  using TopologyVisitor::visit;
  bool visit(const Device* node) override;

  uint32_t did;
  bool found = false;
  const Device* device = nullptr;
};

}  // namespace Topology
