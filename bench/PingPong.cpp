// SPDX-License-Identifier: Apache-2.0
#include "bench/PingPong.hpp"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace Bench {

namespace {

bool send(int fd, const std::string& frame) {
  return ::send(fd, frame.data(), frame.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(frame.size());
}

bool receive(int fd, std::string& frame) {
  return ::recv(fd, frame.data(), frame.size(), MSG_WAITALL) == static_cast<ssize_t>(frame.size());
}

}  // namespace

PingPong::PingPong(size_t requestBytes, size_t answerBytes)
    : request_(requestBytes, 'q'), answer_(answerBytes, 'a') {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::runtime_error("no socket pair");
  }
  peer_ = ::fork();
  if (peer_ == 0) {
    ::close(ends[0]);
    while (receive(ends[1], request_) && send(ends[1], answer_)) {
    }
    ::_exit(0);
  }
  ::close(ends[1]);
  fd_ = ends[0];
}

PingPong::~PingPong() {
  ::close(fd_);
  ::waitpid(peer_, nullptr, 0);
}

void PingPong::call() {
  if (!send(fd_, request_) || !receive(fd_, answer_)) {
    throw std::runtime_error("the peer is gone");
  }
}

}  // namespace Bench
