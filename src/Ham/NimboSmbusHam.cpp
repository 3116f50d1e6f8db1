// SPDX-License-Identifier: Apache-2.0
#include "Ham/NimboSmbusHam.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "Components/HardwareDevice.hpp"
#include "Nimbo.hpp"
#include "NimboUtil/PLSocket.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace Ham {

namespace {

constexpr unsigned kSevenBits = 0x7f;

}  // namespace

class NimboSmbusHam::AtMux {
 public:
  AtMux(NimboSmbusHam& ham, const Component::LogicalDevice::Mux& mux)
      : ham_(ham), address_(ham.getAddress()), bus_(ham.getBus()) {
    const auto* muxHam = dynamic_cast<const NimboSmbusHam*>(mux.device()->ham);
    CHECK(muxHam);
    ham_.setAddress(muxHam->getAddress());
    ham_.setBus(muxHam->getBus());
  }
  ~AtMux() {
    ham_.setAddress(address_);
    ham_.setBus(bus_);
  }
  AtMux(const AtMux&) = delete;
  AtMux& operator=(const AtMux&) = delete;

 private:
  NimboSmbusHam& ham_;
  uint8_t address_;
  uint8_t bus_;
};

void NimboSmbusHam::init() {
  prepareRequestCount_ = 0;
  request_.Clear();
  response_.Clear();
  for (Component::LogicalDevice::Mux* mux : muxes) {
    const AtMux at(*this, *mux);
    prepareRequestCount_ += static_cast<uint32_t>(mux->selectRequest(this));
  }
}

// Removed requests stay allocated and are used again.
void NimboSmbusHam::prepare() {
  auto* requests = request_.mutable_request();
  while (requests->size() > static_cast<int>(prepareRequestCount_)) {
    requests->RemoveLast();
  }
  response_.Clear();
  lastResponseId = -1;
}

int NimboSmbusHam::execute() {
  std::for_each(muxes.rbegin(), muxes.rend(), [this](Component::LogicalDevice::Mux* mux) {
    const AtMux at(*this, *mux);
    mux->resetRequest(this);
  });
  TRACE(4, "executing NimboSmbusHam request");
  if (retryCountSet) {
    request_.set_retrycount(retryCount);
  }
  Smbus::TransactionResponse* answer = nullptr;
  const int sent = _plSock->sendRequestWait(&request_, &answer);
  const int error = errno;
  const std::unique_ptr<Smbus::TransactionResponse> owned(answer);
  if (sent < 0) {
    TRACE(3, "%s: error. %d, %s", "execute", error, std::strerror(error));
    return PL_STATUS_FAILED;
  }
  response_.Swap(answer);
  return checkResponse();
}

int NimboSmbusHam::checkResponse() const {
  if (response_.failed()) {
    TRACE(3, "%s: failure in response %s", "execute",
          response_.has_reason() ? response_.reason().c_str() : "unknown reason");
    return PL_STATUS_REMOTE;
  }
  if (response_.response_size() != request_.request_size()) {
    TRACE(3, "%s: invalid number of response entries; expected %d, got %d", "execute",
          request_.request_size(), response_.response_size());
    return PL_STATUS_REMOTE;
  }
  return PL_STATUS_OK;
}

void NimboSmbusHam::requestInit(Smbus::Request* request, uint32_t reg, Smbus::RequestType type,
                                size_t size, bool writeFlag, bool readFlag) {
  addr.reg = reg;
  addr.readFlag = readFlag;
  request->set_type(type);
  request->set_size(static_cast<uint32_t>(size));
  request->set_addr(addr.word());
  request->set_controlleraddr(controllerAddr);
  request->set_writeflag(writeFlag);
  request->set_mastertype(masterType);
  ++lastResponseId;
}

Smbus::Request* NimboSmbusHam::add(uint32_t reg, Smbus::RequestType type, size_t size,
                                   bool writeFlag, bool readFlag) {
  Smbus::Request* request = request_.add_request();
  requestInit(request, reg, type, size, writeFlag, readFlag);
  return request;
}

Ham::ResponseId NimboSmbusHam::addBare(uint32_t reg, Smbus::RequestType type, size_t size,
                                       bool writeFlag, bool readFlag) {
  add(reg, type, size, writeFlag, readFlag);
  return static_cast<ResponseId>(lastResponseId);
}

Ham::ResponseId NimboSmbusHam::addData(uint32_t reg, Smbus::RequestType type, const void* data,
                                       size_t length, bool flag) {
  add(reg, type, length, flag, false)->set_data(data, length);
  return static_cast<ResponseId>(lastResponseId);
}

Ham::ResponseId NimboSmbusHam::addRecvByte() { return addBare(0, Smbus::Read, 0, false, false); }

Ham::ResponseId NimboSmbusHam::addRead8(uint32_t reg) {
  return addBare(reg, Smbus::Read, sizeof(uint8_t), false, false);
}

Ham::ResponseId NimboSmbusHam::addRead16(uint32_t reg) {
  return addBare(reg, Smbus::Read, sizeof(uint16_t), false, false);
}

// The flag of a read travels in the address word, that of a write in a field of its own.
Ham::ResponseId NimboSmbusHam::addRead(uint32_t reg, uint32_t length, bool flag) {
  return addBare(reg, Smbus::Read, length, false, flag);
}

Ham::ResponseId NimboSmbusHam::addReadBlock(uint32_t reg) {
  return addBare(reg, Smbus::ReadBlock, 0, false, false);
}

// A send-byte is a write of size 0 with the byte in the place of the register.
Ham::ResponseId NimboSmbusHam::addSendByte(uint8_t value, bool flag) {
  return addBare(value, Smbus::Write, 0, flag, false);
}

Ham::ResponseId NimboSmbusHam::addWrite8(uint32_t reg, uint8_t value, bool flag) {
  return addData(reg, Smbus::Write, &value, sizeof value, flag);
}

Ham::ResponseId NimboSmbusHam::addWrite16(uint32_t reg, uint16_t value, bool flag) {
  const uint8_t bytes[] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
  return addData(reg, Smbus::Write, bytes, sizeof bytes, flag);
}

Ham::ResponseId NimboSmbusHam::addWrite(uint32_t reg, const void* data, uint32_t length,
                                        bool flag) {
  return addData(reg, Smbus::Write, data, length, flag);
}

Ham::ResponseId NimboSmbusHam::addWriteBlock(uint32_t reg, const void* data, uint32_t length,
                                             bool flag) {
  return addData(reg, Smbus::WriteBlock, data, length, flag);
}

Ham::ResponseId NimboSmbusHam::addProcessCall(uint32_t reg, uint16_t value) {
  const uint8_t bytes[] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
  return addData(reg, Smbus::ProcessCall, bytes, sizeof bytes, false);
}

const std::string& NimboSmbusHam::dataOf(ResponseId idx) const {
  CHECK(idx != INVALID_RESPONSE_ID);
  CHECK_TEXT(static_cast<uint32_t>(response_.response_size()) > prepareRequestCount_ + idx,
             "( uint32_t )response_.response_size() > prepareRequestCount_ + idx");
  return response_.response(static_cast<int>(prepareRequestCount_ + idx)).data();
}

uint8_t NimboSmbusHam::get8(ResponseId idx) {
  const std::string& data = dataOf(idx);
  CHECK(data.size() == 1);
  return static_cast<uint8_t>(data[0]);
}

uint16_t NimboSmbusHam::get16(ResponseId idx) {
  const std::string& data = dataOf(idx);
  CHECK(data.size() == 2);
  return static_cast<uint16_t>(static_cast<uint8_t>(data[0]) | static_cast<uint8_t>(data[1]) << 8);
}

std::string NimboSmbusHam::getBlock(ResponseId idx, size_t) { return dataOf(idx); }

void NimboSmbusHam::setAddress(uint8_t address) { addr.address = address & kSevenBits; }
uint8_t NimboSmbusHam::getAddress() const { return addr.address & kSevenBits; }
void NimboSmbusHam::setBus(uint8_t bus) { addr.bus = bus & kSevenBits; }
uint8_t NimboSmbusHam::getBus() const { return addr.bus & kSevenBits; }

}  // namespace Ham
