// SPDX-License-Identifier: Apache-2.0
#include "Ham/NimboSmbusVisitor.hpp"

#include "Components/HardwareDevice.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Ham {

NimboSmbusHam* NimboSmbusHam::create(const Topology::Topology& topology,
                                     const Drivers::DriverArgs& args) {
  NimboSmbusVisitor visitor(args);
  topology.accept(&visitor);
  return visitor.ham;
}

bool NimboSmbusVisitor::visit(const Topology::Component* node) {
  if (node->uid != args.uid) {
    return true;
  }
  found = true;
  return false;
}

bool NimboSmbusVisitor::visit(const Topology::Device* node) {
  const bool isItself = args.uid == Drivers::kNoComponent && node->did == args.did;
  if (!found && !isItself) {
    return true;
  }
  found = true;
  ham = new NimboSmbusHam;  // to the caller of create()
  ham->addr = args.address;
  ham->addr.addrSize = 1;
  return false;
}

bool NimboSmbusVisitor::visit(const Topology::Bus* node) {
  if (found) {
    ham->setBus(static_cast<uint8_t>(node->id));
    busId = node->id;
  }
  return true;
}

bool NimboSmbusVisitor::visit(const Topology::Accelerator* node) {
  if (found) {
    ham->addr.accel = node->id & 0x7f;
  }
  return true;
}

bool NimboSmbusVisitor::visit(const Topology::Mux* node) {
  if (!found) {
    return true;
  }
  TRACE(3, "Mux using device %u with value %u", node->did, busId);
  const Topology::Device* topoDev = Topology::findDevice(node->did);
  CHECK(topoDev);
  if (topoDev->driverArgs == nullptr) {
    TRACE(3, "Device %u isn't declared inline", node->did);
  }
  CHECK_TEXT(topoDev->driverArgs, "topoDev->args");
  Drivers::DriverArgs& muxArgs = *topoDev->driverArgs;
  Component::HardwareDevice* muxDevice = Component::HardwareDevice::create(muxArgs, nullptr);
  CHECK(muxDevice);
  ham->muxes.push_front(muxDevice->newMux(muxArgs, busId));
  return true;
}

bool NimboSmbusVisitor::visit(const Topology::SCD* node) {
  if (found) {
    ham->controllerAddr = node->pci;
  }
  return masterIs(Smbus::SCD);
}

bool NimboSmbusVisitor::visit(const Topology::I2C* node) {
  return masterIs(node->simulated ? Smbus::SimulatedI2C : Smbus::I2C);
}

bool NimboSmbusVisitor::visit(const Topology::IOPort*) { return masterIs(Smbus::IOPort); }
bool NimboSmbusVisitor::visit(const Topology::Celestica*) { return masterIs(Smbus::Celestica); }
bool NimboSmbusVisitor::visit(const Topology::PLM*) { return masterIs(Smbus::PLM); }
bool NimboSmbusVisitor::visit(const Topology::SccSpi*) { return masterIs(Smbus::SccSpi); }

bool NimboSmbusVisitor::masterIs(Smbus::MasterType type) {
  if (found) {
    ham->masterType = type;
  }
  return true;
}

}  // namespace Ham
