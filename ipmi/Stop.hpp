// SPDX-License-Identifier: Apache-2.0
//
// The request that a thread end, made once by another thread. It can be waited for by itself or,
// as a descriptor, together with others.
#pragma once

#include <chrono>

namespace IpmiPlugin {

class Stop {
 public:
  // Throws std::system_error when the system gives no descriptor.
  Stop();
  ~Stop();
  Stop(const Stop&) = delete;
  Stop& operator=(const Stop&) = delete;

  void request();

  // True: it is requested. False: it was not for that long.
  [[nodiscard]] bool waitFor(std::chrono::milliseconds time) const;

  // Readable once it is requested.
  [[nodiscard]] int fd() const { return fd_; }

 private:
  int fd_;
};

}  // namespace IpmiPlugin
