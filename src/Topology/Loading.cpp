// SPDX-License-Identifier: Apache-2.0
//
// The current tree: loading it and finding devices in it.
#include "Topology/Topology.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace Topology {

Topology* _topology = nullptr;
std::string _topology_json;
std::map<std::string, std::shared_ptr<Device>> _topology_index;

bool SearchDeviceVisitor::visit(const Device* node) {
  if (node->did != did) {
    return true;
  }
  TRACE(2, "Device %u found in topology", did);
  device = node;
  found = true;
  return false;
}

int loadTopology(const char* json) {
  if (_topology != nullptr && _topology_json == json) {
    TRACE(2, "topology is the same as the previously loaded one (using it)");
    return PL_STATUS_OK;
  }
  TRACE(2, "loading topology json");
  Document document;
  document.Parse(json);
  if (document.HasParseError()) {
    TRACE(2, "failed to load topology from json: %s offset %zd",
          rapidjson::GetParseError_En(document.GetParseError()),
          static_cast<ssize_t>(document.GetErrorOffset()));
    return PL_STATUS_INVALID;
  }
  delete _topology;
  _topology = nullptr;
  _topology_index.clear();
  _topology = Topology::fromJSON(document);
  if (_topology == nullptr) {
    TRACE(2, "failed to create topology tree");
    return PL_STATUS_REMOTE;
  }
  _topology_json = json;
  return PL_STATUS_OK;
}

const Device* findDevice(unsigned did) {
  SearchDeviceVisitor search(did);
  if (_topology != nullptr) {
    _topology->accept(&search);
  }
  return search.device;
}

const Device* getDeviceByLabel(const char* label) {
  const auto it = _topology_index.find(label);
  return it != _topology_index.end() ? it->second.get() : nullptr;
}

bool isDeviceObject(const char* text) { return text[0] == '{'; }

}  // namespace Topology
