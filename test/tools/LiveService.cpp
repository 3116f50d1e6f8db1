// SPDX-License-Identifier: Apache-2.0
#include "test/tools/LiveService.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>

namespace TestSupport {

namespace {

bool accepts(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool accepted =
      ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  ::close(fd);
  return accepted;
}

std::vector<std::string> command(const std::string& socket, std::vector<std::string> options) {
  options.insert(options.begin(), {NIMBO_SMBUSD, "--socket", socket});
  return options;
}

}  // namespace

LiveService::LiveService(const std::string& socket, std::vector<std::string> options)
    : process_(command(socket, std::move(options)), {}) {
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds{30};
  while (!accepts(socket)) {
    if (std::chrono::steady_clock::now() > giveUp) {
      ADD_FAILURE() << process_.finish().err;
      return;
    }
    std::this_thread::yield();
  }
}

Result LiveService::stop() {
  process_.signal(SIGTERM);
  return process_.finish();
}

}  // namespace TestSupport
