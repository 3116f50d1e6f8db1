// SPDX-License-Identifier: Apache-2.0
#include "smbus/client/Stream.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>

namespace PlatformLibrary {

namespace {

// Linux bounds the wait for a place in the listener's queue by the send time-out; poll(2) knows
// nothing of that queue. An interrupted connect() has left nothing behind and is simply repeated.
bool connectWithin(int fd, const sockaddr_un& address, const Deadline& deadline) {
  for (int left = deadline.millisecondsLeft(); left > 0; left = deadline.millisecondsLeft()) {
    const timeval limit{left / 1000, left % 1000 * 1000};
    if (::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0) {
      return false;
    }
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
      return true;
    }
    if (errno != EINTR && errno != EAGAIN) {
      return false;
    }
  }
  errno = ETIMEDOUT;
  return false;
}

}  // namespace

int openStream(const std::string& path, const Deadline& deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  path.copy(address.sun_path, path.size());
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd >= 0 && !connectWithin(fd, address, deadline)) {
    closeQuietly(fd);
    return -1;
  }
  return fd;
}

bool awaitEvents(int fd, short events, const Deadline& deadline) {
  for (int left = deadline.millisecondsLeft(); left > 0; left = deadline.millisecondsLeft()) {
    pollfd entry{fd, events, 0};
    const int ready = ::poll(&entry, 1, left);
    if (ready > 0) {
      return true;
    }
    if (ready < 0 && errno != EINTR) {
      return false;
    }
  }
  errno = ETIMEDOUT;
  return false;
}

bool isQuiet(int fd) {
  if (fd < 0) {  // poll(2) would ignore it
    return false;
  }
  pollfd entry{fd, POLLIN, 0};
  int ready;
  do {
    ready = ::poll(&entry, 1, 0);
  } while (ready < 0 && errno == EINTR);
  return ready == 0;
}

void closeQuietly(int fd) {
  const int error = errno;
  ::close(fd);
  errno = error;
}

}  // namespace PlatformLibrary
