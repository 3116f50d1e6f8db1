// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/SocketTransport.hpp"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace SmbusService {

namespace {

bool wouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

bool connectionLost(int error) { return error == EPIPE || error == ECONNRESET; }

IoResult failure(int error) {
  return connectionLost(error) ? IoResult{IoStatus::kClosed, 0, 0}
                               : IoResult{IoStatus::kFailed, 0, error};
}

// Rounded up, so that a wait does not end before its time.
int pollTimeout(Duration left) {
  const auto milliseconds = std::chrono::ceil<Milliseconds>(left).count();
  return static_cast<int>(std::clamp<int64_t>(milliseconds, 0, INT_MAX));
}

}  // namespace

IoResult SocketTransport::waitFor(short events, TimePoint deadline) {
  pollfd watched{socket_.get(), events, 0};
  for (;;) {
    const int ready = ::poll(&watched, 1, pollTimeout(deadline - clock_.now()));
    if (ready > 0) {
      return {};
    }
    if (ready == 0) {
      return {IoStatus::kTimeout, 0, 0};
    }
    if (errno != EINTR) {
      return failure(errno);
    }
  }
}

IoResult SocketTransport::receive(std::span<char> into, std::optional<TimePoint> deadline) {
  const int flags = deadline ? MSG_DONTWAIT : 0;
  for (;;) {
    const ssize_t received = ::recv(socket_.get(), into.data(), into.size(), flags);
    if (received > 0) {
      return {IoStatus::kDone, static_cast<size_t>(received), 0};
    }
    if (received == 0) {
      return {IoStatus::kClosed, 0, 0};
    }
    if (deadline && wouldBlock(errno)) {
      const IoResult waited = waitFor(POLLIN, *deadline);
      if (waited.status != IoStatus::kDone) {
        return waited;
      }
    } else if (errno != EINTR) {
      return failure(errno);
    }
  }
}

IoResult SocketTransport::send(std::string_view bytes, TimePoint deadline) {
  while (!bytes.empty()) {
    const ssize_t sent =
        ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<size_t>(sent));
    } else if (wouldBlock(errno)) {
      const IoResult waited = waitFor(POLLOUT, deadline);
      if (waited.status != IoStatus::kDone) {
        return waited;
      }
    } else if (errno != EINTR) {
      return failure(errno);
    }
  }
  return {};
}

void SocketTransport::stopReceiving() { ::shutdown(socket_.get(), SHUT_RD); }

void SocketTransport::shutdown() { ::shutdown(socket_.get(), SHUT_RDWR); }

}  // namespace SmbusService
