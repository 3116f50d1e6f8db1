// SPDX-License-Identifier: Apache-2.0
#include "Topology/Topology.hpp"

namespace Topology {

namespace {

using Utils::member;

// The controller types of the text, in the order in which they are tried.
struct MediumType {
  const char* name;
  std::shared_ptr<MediumNode> (*fromJSON)(const Value& json);
};

template <class T>
std::shared_ptr<MediumNode> medium(const Value& json) {
  return T::fromJSON(json);
}

constexpr MediumType kMediumTypes[] = {
    {"SCD", medium<SCD>},         {"I2C", medium<I2C>},
    {"IOPort", medium<IOPort>},   {"Celestica", medium<Celestica>},
    {"PLM", medium<PLM>},         {"SccSpi", medium<SccSpi>},
    {"LinuxFs", medium<LinuxFs>},
};

std::shared_ptr<MediumNode> mediumFromJSON(const Value& json) {
  const std::string type = json["type"].GetString();
  for (const MediumType& known : kMediumTypes) {
    if (type == known.name) {
      return known.fromJSON(json);
    }
  }
  CHECK_TEXT(false, "false && \"Unknown type\"");
}

template <class Controller>
std::shared_ptr<Controller> busController(const Value& json) {
  auto controller = std::make_shared<Controller>();
  Bus::init(controller, json);
  return controller;
}

// A list whose elements must be objects, in document order.
template <class Child>
void appendObjects(const Value& json, const char* key, std::vector<std::shared_ptr<Child>>& list) {
  const Value* elements = member(json, key);
  if (elements == nullptr) {
    return;
  }
  list.reserve(elements->Size());
  for (auto it = elements->Begin(); it != elements->End(); ++it) {
    CHECK(it->IsObject());
    list.push_back(Child::fromJSON(*it));
  }
}

// The accelerators of a controller; `duplicate` is the text of the check that each id is new.
void addAccelerators(const Value& json, std::map<uint32_t, std::shared_ptr<Accelerator>>& map,
                     const char* duplicate) {
  const Value* accels = member(json, "accelerators");
  if (accels == nullptr) {
    return;
  }
  CHECK_TEXT(accels->IsArray(), "accels.IsArray()");
  for (const Value& element : accels->GetArray()) {
    auto accel = Accelerator::fromJSON(element);
    CHECK_TEXT(map.find(accel->id) == map.end(), duplicate);
    map[accel->id] = accel;
  }
}

unsigned optionalUint(const Value& value, const char* key, unsigned absent) {
  const Value* number = member(value, key);
  return number != nullptr ? number->GetUint() : absent;
}

}  // namespace

std::shared_ptr<Component> Component::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  const Value* uid = member(json, "uid");
  CHECK_TEXT(uid, "json.HasMember( \"uid\" )");
  auto component = std::make_shared<Component>();
  component->uid = uid->GetUint();
  return component;
}

std::shared_ptr<Device> Device::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  const Value* did = member(json, "did");
  CHECK_TEXT(did, "json.HasMember( \"did\" )");
  auto device = std::make_shared<Device>();
  device->did = did->GetUint();
  if (json.HasMember("driver")) {
    device->driverArgs = Drivers::DriverArgs::fromJSON(json);
  }
  if (const Value* components = member(json, "components")) {
    device->components.reserve(components->Size());
    for (const Value& component : components->GetArray()) {
      device->components.push_back(Component::fromJSON(component));
    }
  }
  if (const Value* label = member(json, "label")) {
    _topology_index[label->GetString()] = device;
  }
  return device;
}

std::shared_ptr<Mux> Mux::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  const Value* did = member(json, "did");
  CHECK_TEXT(did, "json.HasMember( \"did\" )");
  auto mux = std::make_shared<Mux>();
  mux->did = did->GetUint();
  if (json.HasMember("busses")) {
    const Value& busses = json["busses"];
    for (auto it = busses.Begin(); it != busses.End(); ++it) {
      CHECK(it->IsObject());
      auto bus = Bus::fromJSON(*it);
      // Unlike an accelerator's, a later bus of the same id replaces the earlier one.
      mux->busses[bus->id] = bus;
    }
  }
  return mux;
}

std::shared_ptr<Bus> Bus::fromJSON(const Value& json) {
  auto bus = std::make_shared<Bus>();
  init(bus, json);
  return bus;
}

void Bus::init(std::shared_ptr<Bus> bus, const Value& json) {
  CHECK(json.IsObject());
  const Value* id = member(json, "id");
  CHECK_TEXT(id, "json.HasMember( \"id\" )");
  bus->id = static_cast<uint32_t>(id->GetInt());
  appendObjects(json, "devices", bus->devices);
  appendObjects(json, "muxes", bus->muxes);
}

std::shared_ptr<Accelerator> Accelerator::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  const Value* id = member(json, "id");
  CHECK_TEXT(id, "json.HasMember( \"id\" )");
  auto accel = std::make_shared<Accelerator>();
  accel->id = id->GetUint();
  if (const Value* busses = member(json, "busses")) {
    CHECK_TEXT(busses->IsArray(), "busses.IsArray()");
    for (const Value& element : busses->GetArray()) {
      auto bus = Bus::fromJSON(element);
      CHECK_TEXT(accel->busses.find(bus->id) == accel->busses.end(),
                 "accel->busses.find( bus->id ) == accel->busses.end()");
      accel->busses[bus->id] = bus;
    }
  }
  return accel;
}

std::shared_ptr<SCD> SCD::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  const Value* pci = member(json, "pci");
  CHECK_TEXT(pci, "json.HasMember( \"pci\" )");
  auto scd = std::make_shared<SCD>();
  scd->pci = pci->GetUint();
  addAccelerators(json, scd->accelerators,
                  "scd->accelerators.find( accel->id ) == scd->accelerators.end()");
  return scd;
}

std::shared_ptr<Celestica> Celestica::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  auto cel = std::make_shared<Celestica>();
  addAccelerators(json, cel->accelerators,
                  "cel->accelerators.find( accel->id ) == cel->accelerators.end()");
  return cel;
}

std::shared_ptr<LinuxFs> LinuxFs::fromJSON(const Value& json) {
  CHECK(json.IsObject());
  auto fs = std::make_shared<LinuxFs>();
  appendObjects(json, "devices", fs->devices);
  return fs;
}

std::shared_ptr<I2C> I2C::fromJSON(const Value& json) {
  auto i2c = busController<I2C>(json);
  if (const Value* simulated = member(json, "simulated")) {
    i2c->simulated = simulated->GetBool();
  }
  return i2c;
}

std::shared_ptr<IOPort> IOPort::fromJSON(const Value& json) { return busController<IOPort>(json); }

std::shared_ptr<PLM> PLM::fromJSON(const Value& json) { return busController<PLM>(json); }

std::shared_ptr<SccSpi> SccSpi::fromJSON(const Value& json) { return busController<SccSpi>(json); }

Topology* Topology::fromJSON(const Document& json) {
  auto topology = std::make_unique<Topology>();
  CHECK(json.IsArray());
  for (auto it = json.Begin(); it != json.End(); ++it) {
    CHECK(it->IsObject());
    CHECK_TEXT(it->HasMember("type"), "it->HasMember( \"type\" )");
    CHECK_TEXT(it->HasMember("ham"), "it->HasMember( \"ham\" )");
    auto node = mediumFromJSON(*it);
    node->ham = (*it)["ham"].GetString();
    topology->nodes.push_back(std::move(node));
  }
  return topology.release();  // to the caller
}

void fillAddressFromJSON(const Value& value, AhamAddress& addr) {
  CHECK(value.IsObject());
  const Value* address = member(value, "address");
  CHECK_TEXT(address, "value.HasMember( \"address\" )");
  addr = AhamAddress{};
  addr.address = address->GetUint() & 0x7f;
  addr.writeDelay = optionalUint(value, "writeDelay", 0) & 0x3;
  addr.readDelay = optionalUint(value, "readDelay", 0) & 0x3;
  addr.busTimeout = optionalUint(value, "busTimeout", 0) & 0x7;
  addr.extraDelay = optionalUint(value, "extraDelay", 0) & 0x1;
  addr.addrSize = optionalUint(value, "addrSize", 1) & 0x3;
  CHECK(addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4);
  addr.accel = optionalUint(value, "accel", 0) & 0x7f;
}

}  // namespace Topology
