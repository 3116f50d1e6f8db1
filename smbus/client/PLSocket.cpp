// SPDX-License-Identifier: Apache-2.0
#include "NimboUtil/PLSocket.hpp"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "smbus/Frame.hpp"
#include "smbus/client/Deadline.hpp"
#include "smbus/client/ForkMark.hpp"
#include "smbus/client/Settings.hpp"
#include "smbus/client/Stream.hpp"

namespace PlatformLibrary {

namespace {

using SmbusFrame::kHeaderSize;

constexpr size_t kReadAhead = 4096;  // most answers arrive whole in one read of this size

bool isTransient(int error) { return error == EAGAIN || error == EINTR; }

}  // namespace

int PLSocket::setup() {
  if (inSimulation()) {
    return 0;
  }
  return connect(Deadline(callTimeout())) ? 0 : -1;
}

int PLSocket::sendRequestWait(Smbus::TransactionRequest* request,
                              Smbus::TransactionResponse** response) {
  *response = nullptr;
  if (!frame(*request)) {
    return -1;
  }
  const Deadline deadline(callTimeout());
  if (!deliver(deadline) || !receive(deadline)) {
    return fail();
  }
  auto answer = std::make_unique<Smbus::TransactionResponse>();
  if (!answer->ParseFromArray(&incoming_[kHeaderSize], static_cast<int>(awaited_ - kHeaderSize))) {
    errno = EPROTO;
    return fail();
  }
  settled_ = settles(*request, *answer);
  if (!settled_) {
    disconnect();
  }
  *response = answer.release();  // the caller's from here
  return 0;
}

// Fills outgoing_. A request that is too large leaves the connection as it is.
bool PLSocket::frame(const Smbus::TransactionRequest& request) {
  const size_t length = request.ByteSizeLong();
  if (length > SmbusFrame::kMaxMessage) {
    errno = EMSGSIZE;
    return false;
  }
  outgoing_.resize(kHeaderSize + length);
  SmbusFrame::putLength(outgoing_.data(), static_cast<uint32_t>(length));
  request.SerializeWithCachedSizesToArray(reinterpret_cast<uint8_t*>(&outgoing_[kHeaderSize]));
  return true;
}

// Once a byte is out, the service may act on the request, and repeating it could write twice. A
// connection that dies before that (the service was restarted just now) is replaced, once.
bool PLSocket::deliver(const Deadline& deadline) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (!usable() && !connect(deadline)) {
      return false;
    }
    if (send(deadline)) {
      return true;
    }
    if (sent_ > 0) {
      return false;
    }
  }
  return false;
}

bool PLSocket::usable() const { return settled_ && owner_ == forkMark() && isQuiet(fd_); }

bool PLSocket::connect(const Deadline& deadline) {
  disconnect();
  fd_ = openStream(servicePath(), deadline);
  owner_ = forkMark();
  return fd_ >= 0;
}

bool PLSocket::send(const Deadline& deadline) {
  sent_ = 0;
  settled_ = false;
  while (sent_ < outgoing_.size()) {
    const ssize_t count =
        ::send(fd_, &outgoing_[sent_], outgoing_.size() - sent_, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      sent_ += static_cast<uint32_t>(count);
    } else if (!isTransient(errno) || !awaitEvents(fd_, POLLOUT, deadline)) {
      return false;
    }
  }
  return true;
}

// Reads until the frame is whole. Bytes behind it, if any, are counted in received_ too.
bool PLSocket::receive(const Deadline& deadline) {
  incoming_.resize(std::max(incoming_.size(), kReadAhead));
  received_ = 0;
  awaited_ = kHeaderSize;
  while (received_ < awaited_) {
    if (!awaitEvents(fd_, POLLIN, deadline)) {
      return false;
    }
    const ssize_t count =
        ::recv(fd_, &incoming_[received_], incoming_.size() - received_, MSG_DONTWAIT);
    if (count == 0) {
      errno = ECONNRESET;
    }
    if (count == 0 || (count < 0 && !isTransient(errno))) {
      return false;
    }
    received_ += static_cast<uint32_t>(std::max<ssize_t>(count, 0));
    if (awaited_ == kHeaderSize && received_ >= kHeaderSize && !takeHeader()) {
      return false;
    }
  }
  return true;
}

bool PLSocket::takeHeader() {
  const uint32_t length = SmbusFrame::announcedLength(incoming_.data());
  if (length > SmbusFrame::kMaxMessage) {
    errno = EPROTO;
    return false;
  }
  awaited_ = static_cast<uint32_t>(kHeaderSize) + length;
  incoming_.resize(std::max<size_t>(incoming_.size(), awaited_));
  return true;
}

// Answers carry no number of their request: one that brings more bytes along, or has not one entry
// for each request, may stand for another, and then so may all that follow it.
bool PLSocket::settles(const Smbus::TransactionRequest& request,
                       const Smbus::TransactionResponse& answer) const {
  return received_ == awaited_ &&
         (answer.failed() || answer.response_size() == request.request_size());
}

int PLSocket::fail() {
  if (errno == EPIPE) {  // the same loss as ECONNRESET, seen by the writer
    errno = ECONNRESET;
  }
  disconnect();
  return -1;
}

void PLSocket::disconnect() {
  closeQuietly(fd_);
  fd_ = -1;
  settled_ = true;
}

}  // namespace PlatformLibrary
