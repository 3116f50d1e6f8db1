// SPDX-License-Identifier: Apache-2.0
//
// What the tests of the client's socket share.
#pragma once

#include <cerrno>
#include <memory>
#include <string>

#include "NimboUtil/PLSocket.hpp"
#include "test/support/TextMessage.hpp"

namespace SocketTest {

inline constexpr const char* kRead = "request { type: Read addr: 0x2000000005 size: 1 }";
inline constexpr const char* kWrite = "request { type: Write addr: 7 size: 1 data: 'x' }";
inline constexpr const char* kByteRead = "response { data: '\\x2A' }";

struct Outcome {
  int result;
  int error;  // errno, 0 on success
  std::unique_ptr<Smbus::TransactionResponse> response;
};

inline Outcome call(PlatformLibrary::PLSocket& socket, Smbus::TransactionRequest request) {
  Smbus::TransactionResponse none;
  Smbus::TransactionResponse* response = &none;  // so that a pointer left alone shows
  errno = 0;
  const int result = socket.sendRequestWait(&request, &response);
  return {result, result < 0 ? errno : 0, std::unique_ptr<Smbus::TransactionResponse>(response)};
}

inline Outcome call(PlatformLibrary::PLSocket& socket, const char* requestText) {
  return call(socket, Doubles::messageOf<Smbus::TransactionRequest>(requestText));
}

// A request of exactly `size` bytes as a message.
inline Smbus::TransactionRequest requestOfSize(size_t size) {
  Smbus::TransactionRequest request;
  std::string* data = request.add_request()->mutable_data();
  data->assign(size, 'x');
  data->resize(2 * size - request.ByteSizeLong());
  return request;
}

}  // namespace SocketTest
