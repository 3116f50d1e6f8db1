// SPDX-License-Identifier: Apache-2.0
//
// Requests as the driver library builds them, and one set of buses to send them to.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/AddressWord.hpp"
#include "smbus/service/BusSet.hpp"

namespace SmbusService {

inline constexpr uint32_t kBusNumber = 5;

struct RequestOptions {
  uint32_t bus = kBusNumber;
  uint32_t addressSize = 1;
};

// The address word of a device on I2C bus kBusNumber.
inline uint64_t addressWord(uint8_t device, uint32_t reg, const RequestOptions& options = {}) {
  uint64_t word = SmbusAddress::kRegister.set(0, reg);
  word = SmbusAddress::kDevice.set(word, device);
  word = SmbusAddress::kBus.set(word, options.bus);
  return SmbusAddress::kAddressSize.set(word, options.addressSize);
}

// The i-th bus of busSet() is I2C bus kBusNumber + i.
inline BusKey busKey(uint32_t index = 0) { return {Smbus::I2C, 0, 0, kBusNumber + index}; }

inline Smbus::Request& add(Smbus::TransactionRequest& message, Smbus::RequestType type,
                           uint64_t word, uint32_t size) {
  Smbus::Request& request = *message.add_request();
  request.set_type(type);
  request.set_addr(word);
  request.set_size(size);
  request.set_mastertype(Smbus::I2C);
  return request;
}

inline Smbus::Request& addRead(Smbus::TransactionRequest& message, uint8_t device, uint32_t reg,
                               uint32_t size, const RequestOptions& options = {}) {
  return add(message, Smbus::Read, addressWord(device, reg, options), size);
}

inline Smbus::Request& addWrite(Smbus::TransactionRequest& message, uint8_t device, uint32_t reg,
                                std::string_view data, const RequestOptions& options = {}) {
  Smbus::Request& request = add(message, Smbus::Write, addressWord(device, reg, options),
                                static_cast<uint32_t>(data.size()));
  request.set_data(data.data(), data.size());
  return request;
}

inline Smbus::Request& addSend(Smbus::TransactionRequest& message, uint8_t device, uint8_t byte,
                               const RequestOptions& options = {}) {
  return add(message, Smbus::Write, addressWord(device, byte, options), 0);
}

}  // namespace SmbusService
