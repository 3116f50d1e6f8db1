// SPDX-License-Identifier: Apache-2.0
//
// Hardware access methods: how every driver reaches its device's registers.
//
// A driver collects register operations into a batch and runs it in one go:
//     ham->prepare();
//     auto id = ham->addRead16(0x40);
//     if (pl_status rc = ham->execute()) return rc;
//     uint16_t word = ham->get16(id);
// or calls one of the wrappers at the end, which are batches of one. Results stay readable until
// the next prepare(). A HAM holds one batch at a time and is used from one thread. HAMs live until
// the process ends; nothing deletes one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "Drivers/Drivers.hpp"
#include "Topology/Topology.hpp"
#include "Utils/ExpectedVal.hpp"

namespace Ham {

class Ham {
 public:
  // Which operation of the batch a result belongs to, from 0.
  using ResponseId = uint32_t;
  static constexpr ResponseId INVALID_RESPONSE_ID = 0xFFFFFFFF;

  // Makes a HAM of a registered type, initialised; null, with a trace, when that fails.
  static Ham* create(const std::string& type, const Topology::Topology& topology,
                     const Drivers::DriverArgs& args);

  virtual void init() {}
  virtual void prepare() = 0;
  virtual int execute() = 0;

  // Operations that a HAM does not offer throw NotImplementedException. `reg` is the register;
  // words and longer numbers have their low byte first on the bus. The flag asks for a packet error
  // code (SMBus 3.0 section 5.4) and is passed on as it is.
  virtual ResponseId addRecvByte();
  virtual ResponseId addRead8(uint32_t reg);
  virtual ResponseId addRead16(uint32_t reg);
  virtual ResponseId addRead32(uint32_t reg);
  virtual ResponseId addRead(uint32_t reg, uint32_t length, bool flag);
  virtual ResponseId addReadBlock(uint32_t reg);
  virtual ResponseId addSendByte(uint8_t value, bool flag);
  virtual ResponseId addWrite8(uint32_t reg, uint8_t value, bool flag);
  virtual ResponseId addWrite16(uint32_t reg, uint16_t value, bool flag);
  virtual ResponseId addWrite32(uint32_t reg, uint32_t value, bool flag);
  virtual ResponseId addWrite(uint32_t reg, const void* data, uint32_t length, bool flag);
  virtual ResponseId addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag);
  virtual ResponseId addProcessCall(uint32_t reg, uint16_t value);
  virtual uint8_t get8(ResponseId idx);
  virtual uint16_t get16(ResponseId idx);
  virtual uint32_t get32(ResponseId idx);
  virtual std::string getBlock(ResponseId idx, size_t length);

  // For simulation: the starting values (borrowed for the HAM's life) and the names of a device.
  virtual void setExpected(Utils::ExpectedVals* values);
  virtual void setDriverName(const std::string& driver, const std::string& label);

  // Retries of every later batch; until it is called the other side's own number holds.
  void retryCountIs(uint32_t count);

  // Batches of one. They return the status of execute() and write their output only on success.
  int recvByte(uint8_t* out);
  int read8(uint32_t reg, uint8_t* out);
  int read16(uint32_t reg, uint16_t* out);
  int read32(uint32_t reg, uint32_t* out);
  int read(uint32_t reg, uint32_t length, std::string* out, bool flag);
  int readBlock(uint32_t reg, std::string* out);
  int sendByte(uint8_t value, bool flag);
  int write8(uint32_t reg, uint8_t value, bool flag);
  int write16(uint32_t reg, uint16_t value, bool flag);
  int write32(uint32_t reg, uint32_t value, bool flag);
  int write(uint32_t reg, const void* data, size_t length, bool flag);
  int writeBlock(uint32_t reg, const void* data, size_t length, bool flag);
  int processCall(uint32_t reg, uint16_t value, uint16_t* out);

 protected:
  Ham() = default;
  ~Ham() = default;

  uint32_t retryCount = 0;
  bool retryCountSet = false;
};

// The HAM types by name.
using HamFactory = std::function<Ham*(const Topology::Topology&, const Drivers::DriverArgs&)>;
extern std::map<std::string, HamFactory> hams;

// The HAM of a device: of the type that the controller above it names, or the simulation. Null,
// with a trace, when the topology does not hold the device. A topology must be loaded.
Ham* createHam(const Drivers::DriverArgs& args);

// Finds a component (or, when `componentUid` is kNoComponent, a device) and the HAM type of the
// controller above it.
class SearchVisitor final : public Topology::TopologyVisitor {
 public:
  SearchVisitor(uint32_t component, uint32_t device_)
      : componentUid(component), deviceUid(device_) {}

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
  bool visit(const Topology::Topology* node) override;
  using TopologyVisitor::visit;

  uint32_t componentUid;
  uint32_t deviceUid;
  bool found = false;
  const Topology::Device* device = nullptr;
  std::string hamName;
};

}  // namespace Ham
