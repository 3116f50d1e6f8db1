// SPDX-License-Identifier: Apache-2.0
#include "NimboUtil/PLSocket.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "pl/pl_host.h"

namespace PlatformLibrary {

namespace {

constexpr const char* kDefaultPath = "/run/nimbo/smbus.sock";

std::string servicePath() {
  const char* path = std::getenv("NIMBO_SMBUS_SOCKET");
  return path != nullptr ? path : kDefaultPath;
}

}  // namespace

PLSocket::PLSocket() = default;

PLSocket::~PLSocket() {
  if (fdWatcher_ != 0 && pl_fd_watcher_delete != nullptr) {
    pl_fd_watcher_delete(fdWatcher_);
  }
  ::close(fd_);
}

int PLSocket::setup() {
  if (std::getenv("SIMULATION_VMID") != nullptr) {
    return 0;
  }
  const std::string path = servicePath();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  path.copy(address.sun_path, path.size());
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    return -1;
  }
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int error = errno;
    ::close(fd);
    errno = error;
    return -1;
  }
  fd_ = fd;
  return 0;
}

}  // namespace PlatformLibrary
