// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Route.hpp"

#include <algorithm>

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/RequestText.hpp"

namespace SmbusService::Recording {

namespace {

// More than any board nests; a message without end must not become a path without end.
constexpr int kMostMuxes = 8;

bool isSendByte(const Smbus::Request& request) {
  return request.has_type() && request.type() == Smbus::Write && request.size() == 0;
}

Hop hopOf(const Smbus::Request& request) {
  return {SmbusAddress::kDevice.get(request.addr()),
          SmbusAddress::kRegister.get(request.addr()) & 0xFF};
}

}  // namespace

int selections(const Smbus::TransactionRequest& message) {
  int count = 0;
  for (int last = message.request_size() - 1; count < std::min(last, kMostMuxes); ++count, --last) {
    const Smbus::Request& first = message.request(count);
    const Smbus::Request& end = message.request(last);
    if (!isSendByte(first) || !isSendByte(end) || busOf(first) != busOf(end) ||
        hopOf(first).device != hopOf(end).device) {
      break;
    }
  }
  return count;
}

Path pathTo(const Smbus::TransactionRequest& message, int request) {
  const int fromEnd = message.request_size() - 1 - request;
  const int depth = std::min({selections(message), request, fromEnd});
  Path path;
  for (int i = 0; i < depth; ++i) {
    path.push_back(hopOf(message.request(i)));
  }
  return path;
}

}  // namespace SmbusService::Recording
