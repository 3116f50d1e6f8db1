// SPDX-License-Identifier: Apache-2.0
#include "ipmi/Stop.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace IpmiPlugin {

Stop::Stop() : fd_(::eventfd(0, EFD_CLOEXEC)) {
  if (fd_ < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
}

Stop::~Stop() { ::close(fd_); }

void Stop::request() { ::eventfd_write(fd_, 1); }

bool Stop::waitFor(std::chrono::milliseconds time) const {
  pollfd request{fd_, POLLIN, 0};
  return ::poll(&request, 1, static_cast<int>(time.count())) > 0;
}

}  // namespace IpmiPlugin
