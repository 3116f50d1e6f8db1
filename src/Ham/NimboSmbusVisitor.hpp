// SPDX-License-Identifier: Apache-2.0
//
// Builds the SMBus HAM of a device: the device is met first, and the nodes above it fill in its
// bus, accelerator, controller and muxes.
#pragma once

#include "Ham/NimboSmbusHam.hpp"

namespace Ham {

class NimboSmbusVisitor final : public Topology::TopologyVisitor {
 public:
  explicit NimboSmbusVisitor(const Drivers::DriverArgs& driverArgs) : args(driverArgs) {}

  using TopologyVisitor::visit;
  bool visit(const Topology::Component* node) override;
  bool visit(const Topology::Device* node) override;
  bool visit(const Topology::Mux* node) override;
  bool visit(const Topology::Bus* node) override;
  bool visit(const Topology::Accelerator* node) override;
  bool visit(const Topology::SCD* node) override;
  bool visit(const Topology::I2C* node) override;
  bool visit(const Topology::IOPort* node) override;
  bool visit(const Topology::Celestica* node) override;
  bool visit(const Topology::PLM* node) override;
  bool visit(const Topology::SccSpi* node) override;

  const Drivers::DriverArgs& args;
  bool found = false;
  NimboSmbusHam* ham = nullptr;  // the caller's
  uint32_t busId = 0;            // of the bus met last: what the mux above it must select

 private:
  bool masterIs(Smbus::MasterType type);
};

}  // namespace Ham
