// SPDX-License-Identifier: Apache-2.0
//
// The client's end of the connection to the SMBus service.
//
// One object is one connection over a Unix-domain stream socket; its path is the environment
// variable NIMBO_SMBUS_SOCKET, or /run/nimbo/smbus.sock. In simulation (SIMULATION_VMID is set)
// there is no service, and setup() succeeds without one. Used from one thread.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "NimboUtil/Smbus.pb.h"

namespace PlatformLibrary {

class __attribute__((visibility("default"))) PLSocket {
 public:
  PLSocket();
  // Removes the watcher, if there is one and the host can, and closes the descriptor.
  ~PLSocket();
  PLSocket(const PLSocket&) = delete;
  PLSocket& operator=(const PLSocket&) = delete;

  // Connects to the service. Returns 0, or a negative value with errno set; it may be called again.
  int setup();

 private:
  int32_t fd_ = -1;
  uint64_t fdWatcher_ = 0;  // the host's handle; the library itself registers none
  uint64_t context_ = 0;
  bool blocking_ = true;
  std::string header_ = std::string(4, '\0');  // the frame's length as it arrives
  uint32_t headerReceived_ = 0;
  uint32_t bodyReceived_ = 0;
  uint32_t expectedLength_ = 4;
  std::string body_;
  std::list<std::string> queue_;
};

}  // namespace PlatformLibrary
