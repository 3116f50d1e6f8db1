// SPDX-License-Identifier: Apache-2.0
#include "Nimbo.hpp"

#include <unistd.h>

#include "NimboUtil/PLSocket.hpp"
#include "Topology/Topology.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_status.h"

PlatformLibrary::PLSocket* _plSock = nullptr;

namespace {

constexpr unsigned kRetryPauseSeconds = 1;

bool connected(int retries) {
  for (int attempt = 0; attempt < retries; ++attempt) {
    if (_plSock->setup() == 0) {
      return true;
    }
    ::sleep(kRetryPauseSeconds);
  }
  return false;
}

}  // namespace

int plSockInit(const char* caller, int retries) {
  if (_plSock != nullptr) {
    return PL_STATUS_OK;
  }
  _plSock = new PlatformLibrary::PLSocket;  // the process's, once it is connected
  if (connected(retries)) {
    return PL_STATUS_OK;
  }
  TRACE(0, "%s: socket Setup failed!", caller);
  delete _plSock;
  _plSock = nullptr;
  return PL_STATUS_FAILED;
}

int nimboLibraryInit(const char* caller, const char* json, int retries) {
  TRACE(0, "%s", caller);
  TRACE(5, "%s: json = %s", caller, json);
  if (const int status = plSockInit(caller, retries)) {
    return status;
  }
  return Topology::loadTopology(json);
}
