// SPDX-License-Identifier: Apache-2.0
//
// The production access method: a batch becomes one request message to the SMBus service, which
// carries it out and answers with one response message (docs/messages.md).
//
// For a device behind multiplexers every batch begins with the requests that open the path, the mux
// nearest the controller first, and ends with those that close it, in reverse: one transaction
// selects, accesses and releases. Results are numbered without them.
#pragma once

#include <list>
#include <string>

#include "Components/Mux.hpp"
#include "Ham/Ham.hpp"
#include "NimboUtil/Smbus.pb.h"

namespace Ham {

class NimboSmbusHam final : public Ham {
 public:
  // The HAM of a device, addressed by its place in the topology; null when that does not hold it.
  static NimboSmbusHam* create(const Topology::Topology& topology, const Drivers::DriverArgs& args);

  // Adds the requests that open the path; they stay at the head of every batch.
  void init() override;
  void prepare() override;
  // 4 when the service could not be asked, 6 when it failed or gave a wrong number of answers.
  int execute() override;

  ResponseId addRecvByte() override;
  ResponseId addRead8(uint32_t reg) override;
  ResponseId addRead16(uint32_t reg) override;
  ResponseId addRead(uint32_t reg, uint32_t length, bool flag) override;
  ResponseId addReadBlock(uint32_t reg) override;
  ResponseId addSendByte(uint8_t value, bool flag) override;
  ResponseId addWrite8(uint32_t reg, uint8_t value, bool flag) override;
  ResponseId addWrite16(uint32_t reg, uint16_t value, bool flag) override;
  ResponseId addWrite(uint32_t reg, const void* data, uint32_t length, bool flag) override;
  ResponseId addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag) override;
  ResponseId addProcessCall(uint32_t reg, uint16_t value) override;

  // The result must be there and have the width asked for; of a block all is given, whatever
  // `length` says.
  uint8_t get8(ResponseId idx) override;
  uint16_t get16(ResponseId idx) override;
  std::string getBlock(ResponseId idx, size_t length) override;

  // The device that requests go to from now on; numbers of 7 bits.
  virtual void setAddress(uint8_t address);
  virtual uint8_t getAddress() const;
  virtual void setBus(uint8_t bus);
  virtual uint8_t getBus() const;

 private:
  friend class NimboSmbusVisitor;

  // Points the HAM at a mux chip as long as it lives.
  class AtMux;

  NimboSmbusHam() = default;
  Smbus::Request* add(uint32_t reg, Smbus::RequestType type, size_t size, bool writeFlag,
                      bool readFlag);
  void requestInit(Smbus::Request* request, uint32_t reg, Smbus::RequestType type, size_t size,
                   bool writeFlag, bool readFlag);
  // A request without data, and one with.
  ResponseId addBare(uint32_t reg, Smbus::RequestType type, size_t size, bool writeFlag,
                     bool readFlag);
  ResponseId addData(uint32_t reg, Smbus::RequestType type, const void* data, size_t length,
                     bool flag);
  int checkResponse() const;
  const std::string& dataOf(ResponseId idx) const;

  uint32_t prepareRequestCount_ = 0;
  int32_t lastResponseId = -1;
  AhamAddress addr{};
  uint32_t controllerAddr = 0;
  Smbus::TransactionRequest request_;
  Smbus::TransactionResponse response_;
  Smbus::MasterType masterType = Smbus::SimulatedI2C;
  std::list<Component::LogicalDevice::Mux*> muxes;  // from the controller to the device; borrowed
};

}  // namespace Ham
