// SPDX-License-Identifier: Apache-2.0
//
// Links the client library and uses what it exports: the messages and the socket.
#include <NimboUtil/PLSocket.hpp>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

bool messageComesBack() {
  Smbus::TransactionRequest sent;
  Smbus::Request* request = sent.add_request();
  request->set_type(Smbus::ReadBlock);
  request->set_mastertype(Smbus::SccSpi);
  Smbus::TransactionRequest received;
  return received.ParseFromString(sent.SerializeAsString()) && received.request_size() == 1 &&
         received.request(0).type() == Smbus::ReadBlock &&
         received.request(0).mastertype() == Smbus::SccSpi && !received.request(0).has_addr();
}

bool connects(const char* path) {
  ::setenv("NIMBO_SMBUS_SOCKET", path, 1);
  return PlatformLibrary::PLSocket().setup() == 0;
}

}  // namespace

int main() {
  if (!messageComesBack() || connects("/nonexistent/smbus.sock")) {
    std::fputs("the client library does not do what its headers say\n", stderr);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
