// SPDX-License-Identifier: Apache-2.0
//
// The component (or device) is met first and ends the walk; the nodes above it then tell the path.
#include "Ham/Ham.hpp"
#include "Utils/Host.hpp"

namespace Ham {

bool SearchVisitor::visit(const Topology::Component* node) {
  if (node->uid != componentUid) {
    return true;
  }
  TRACE(2, "Component %u found in tree", node->uid);
  found = true;
  return false;
}

bool SearchVisitor::visit(const Topology::Device* node) {
  const bool isItself = componentUid == Drivers::kNoComponent && node->did == deviceUid;
  if (!found && !isItself) {
    return true;
  }
  TRACE(2, "Device %u contain the component", node->did);
  device = node;
  found = true;
  return false;
}

// Alone among the nodes on the path, a mux says stop; its result is ignored like theirs.
bool SearchVisitor::visit(const Topology::Mux* node) {
  if (!found) {
    return true;
  }
  TRACE(2, "Mux using device %d", static_cast<int>(node->did));
  return false;
}

bool SearchVisitor::visit(const Topology::Bus* node) {
  if (found) {
    TRACE(2, "BusId %u", node->id);
  }
  return true;
}

bool SearchVisitor::visit(const Topology::Accelerator* node) {
  if (found) {
    TRACE(2, "AccelId %u", node->id);
  }
  return true;
}

bool SearchVisitor::visit(const Topology::SCD* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "SCD %u %08X", node->pci, node->pci);
  }
  return true;
}

bool SearchVisitor::visit(const Topology::I2C* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "I2C bus %u", node->id);
  }
  return true;
}

bool SearchVisitor::visit(const Topology::IOPort* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "IOPort");
  }
  return true;
}

bool SearchVisitor::visit(const Topology::Celestica* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "Celestica");
  }
  return true;
}

bool SearchVisitor::visit(const Topology::PLM* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "PLM");
  }
  return true;
}

bool SearchVisitor::visit(const Topology::SccSpi* node) {
  if (found) {
    hamName = node->ham;
    TRACE(2, "SccSpi");
  }
  return true;
}

bool SearchVisitor::visit(const Topology::Topology*) { return true; }

}  // namespace Ham
