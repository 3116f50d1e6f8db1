// SPDX-License-Identifier: Apache-2.0
//
// The walk: each node lets its children accept the visitor, in their order, and is visited itself.
#include "Topology/Topology.hpp"

namespace Topology {

namespace {

// Where a child ends the walk, the node itself is still visited; that result no longer matters.
template <class NodeType>
bool visitSelf(const NodeType* node, TopologyVisitor* visitor, bool goOn) {
  const bool own = visitor->visit(node);
  return goOn && own;
}

template <class Child>
bool acceptAll(const std::vector<std::shared_ptr<Child>>& children, TopologyVisitor* visitor) {
  for (const auto& child : children) {
    if (!child->accept(visitor)) {
      return false;
    }
  }
  return true;
}

template <class Child>
bool acceptAll(const std::map<uint32_t, std::shared_ptr<Child>>& children,
               TopologyVisitor* visitor) {
  for (const auto& [id, child] : children) {
    if (!child->accept(visitor)) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool Component::accept(TopologyVisitor* visitor) const { return visitor->visit(this); }

bool Device::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(components, visitor));
}

bool Mux::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(busses, visitor));
}

bool Bus::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(devices, visitor) && acceptAll(muxes, visitor));
}

bool Accelerator::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(busses, visitor));
}

bool SCD::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(accelerators, visitor));
}

bool Celestica::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(accelerators, visitor));
}

bool LinuxFs::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(devices, visitor));
}

bool I2C::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, Bus::accept(visitor));
}

bool IOPort::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, Bus::accept(visitor));
}

bool PLM::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, Bus::accept(visitor));
}

bool SccSpi::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, Bus::accept(visitor));
}

bool Topology::accept(TopologyVisitor* visitor) const {
  return visitSelf(this, visitor, acceptAll(nodes, visitor));
}

}  // namespace Topology
