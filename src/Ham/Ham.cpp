// SPDX-License-Identifier: Apache-2.0
#include "Ham/Ham.hpp"

#include "Utils/Check.hpp"
#include "Utils/Host.hpp"
#include "Utils/NotImplemented.hpp"
#include "Utils/Simulation.hpp"
#include "pl/pl_status.h"

namespace Ham {

namespace {

[[noreturn]] void notImplemented(const char* operation) {
  throw NotImplementedException(operation);
}

// Runs a batch of one read and fetches its result.
template <class Out, class Get>
int fetch(Ham* ham, Out* out, Get get) {
  if (const int rc = ham->execute()) {
    return rc;
  }
  *out = get();
  return PL_STATUS_OK;
}

// The place that createHam() names when no topology is loaded; bring-up notes know it by number.
constexpr unsigned kNoTopologyLine = 123;

}  // namespace

Ham* Ham::create(const std::string& type, const Topology::Topology& topology,
                 const Drivers::DriverArgs& args) {
  TRACE(3, "looking up for %s in %p with %p", type.c_str(), static_cast<const void*>(&topology),
        static_cast<const void*>(&args));
  const auto it = hams.find(type);
  if (it == hams.end()) {
    TRACE(0, "Couldn't find HAM %s", type.c_str());
    return nullptr;
  }
  TRACE(3, "calling %s factory function", type.c_str());
  Ham* ham = it->second(topology, args);
  if (ham == nullptr) {
    TRACE(0, "Factory function returned, couldn't create HAM %s", type.c_str());
    return nullptr;
  }
  TRACE(3, "ham initialisation");
  ham->init();
  return ham;
}

Ham* createHam(const Drivers::DriverArgs& args) {
  const Topology::Topology* topology = Topology::_topology;
  if (topology == nullptr) {
    Utils::checkFailed("topology", {__FILE__, kNoTopologyLine, __PRETTY_FUNCTION__});
  }
  TRACE(0, "looking for component %u of device %u in topology", args.uid, args.did);
  SearchVisitor search(args.uid, args.did);
  topology->accept(&search);
  if (!search.found) {
    TRACE(0, "could not find component uid %d in topology", static_cast<int>(args.uid));
    return nullptr;
  }
  const std::string type = Utils::inSimulation() ? "SimHam" : search.hamName;
  TRACE(0, "creating %s HAM using topology information", type.c_str());
  Ham* ham = Ham::create(type, *topology, args);
  if (ham == nullptr) {
    TRACE(0, "failed to create HAM");
  }
  return ham;
}

Ham::ResponseId Ham::addRecvByte() { notImplemented("addRecvByte"); }
Ham::ResponseId Ham::addRead8(uint32_t) { notImplemented("addRead8"); }
Ham::ResponseId Ham::addRead16(uint32_t) { notImplemented("addRead16"); }
Ham::ResponseId Ham::addRead32(uint32_t) { notImplemented("addRead32"); }
Ham::ResponseId Ham::addRead(uint32_t, uint32_t, bool) { notImplemented("addRead"); }
Ham::ResponseId Ham::addReadBlock(uint32_t) { notImplemented("addReadBlock"); }
Ham::ResponseId Ham::addSendByte(uint8_t, bool) { notImplemented("addSendByte"); }
Ham::ResponseId Ham::addWrite8(uint32_t, uint8_t, bool) { notImplemented("addWrite8"); }
Ham::ResponseId Ham::addWrite16(uint32_t, uint16_t, bool) { notImplemented("addWrite16"); }
Ham::ResponseId Ham::addWrite32(uint32_t, uint32_t, bool) { notImplemented("addWrite32"); }
Ham::ResponseId Ham::addWrite(uint32_t, const void*, uint32_t, bool) { notImplemented("addWrite"); }
Ham::ResponseId Ham::addWriteBlock(uint32_t, const void*, uint32_t, bool) {
  notImplemented("addWriteBlock");
}
Ham::ResponseId Ham::addProcessCall(uint32_t, uint16_t) { notImplemented("addProcessCall"); }
uint8_t Ham::get8(ResponseId) { notImplemented("get8"); }
uint16_t Ham::get16(ResponseId) { notImplemented("get16"); }
uint32_t Ham::get32(ResponseId) { notImplemented("get32"); }
std::string Ham::getBlock(ResponseId, size_t) { notImplemented("getBlock"); }

void Ham::setExpected(Utils::ExpectedVals*) { TRACE(0, "virtual Ham::setExpected() invoked!!!"); }

void Ham::setDriverName(const std::string&, const std::string&) {
  TRACE(0, "virtual Ham::setDriverName() invoked!!!");
}

void Ham::retryCountIs(uint32_t count) {
  retryCount = count;
  retryCountSet = true;
}

int Ham::recvByte(uint8_t* out) {
  prepare();
  const ResponseId id = addRecvByte();
  return fetch(this, out, [&] { return get8(id); });
}

int Ham::read8(uint32_t reg, uint8_t* out) {
  prepare();
  const ResponseId id = addRead8(reg);
  return fetch(this, out, [&] { return get8(id); });
}

int Ham::read16(uint32_t reg, uint16_t* out) {
  prepare();
  const ResponseId id = addRead16(reg);
  return fetch(this, out, [&] { return get16(id); });
}

int Ham::read32(uint32_t reg, uint32_t* out) {
  prepare();
  const ResponseId id = addRead32(reg);
  return fetch(this, out, [&] { return get32(id); });
}

int Ham::read(uint32_t reg, uint32_t length, std::string* out, bool flag) {
  prepare();
  const ResponseId id = addRead(reg, length, flag);
  return fetch(this, out, [&] { return getBlock(id, length); });
}

// Length 0: the block's own length counts.
int Ham::readBlock(uint32_t reg, std::string* out) {
  prepare();
  const ResponseId id = addReadBlock(reg);
  return fetch(this, out, [&] { return getBlock(id, 0); });
}

int Ham::sendByte(uint8_t value, bool flag) {
  prepare();
  addSendByte(value, flag);
  return execute();
}

int Ham::write8(uint32_t reg, uint8_t value, bool flag) {
  prepare();
  addWrite8(reg, value, flag);
  return execute();
}

int Ham::write16(uint32_t reg, uint16_t value, bool flag) {
  prepare();
  addWrite16(reg, value, flag);
  return execute();
}

int Ham::write32(uint32_t reg, uint32_t value, bool flag) {
  prepare();
  addWrite32(reg, value, flag);
  return execute();
}

int Ham::write(uint32_t reg, const void* data, size_t length, bool flag) {
  prepare();
  addWrite(reg, data, static_cast<uint32_t>(length), flag);
  return execute();
}

int Ham::writeBlock(uint32_t reg, const void* data, size_t length, bool flag) {
  prepare();
  addWriteBlock(reg, data, static_cast<uint32_t>(length), flag);
  return execute();
}

int Ham::processCall(uint32_t reg, uint16_t value, uint16_t* out) {
  prepare();
  const ResponseId id = addProcessCall(reg, value);
  return fetch(this, out, [&] { return get16(id); });
}

}  // namespace Ham
