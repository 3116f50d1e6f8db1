// SPDX-License-Identifier: Apache-2.0
//
// A client of the control socket: it says and hears lines.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <optional>
#include <string>
#include <string_view>

#include "smbus/service/Descriptor.hpp"

namespace SmbusService {

class LineClient {
 public:
  explicit LineClient(const std::string& path)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }

  void say(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) {
        return;
      }
      bytes.remove_prefix(static_cast<size_t>(sent));
    }
  }
  void sayNoMore() const { ::shutdown(socket_.get(), SHUT_WR); }

  // Nothing: the other end has closed the connection.
  std::optional<std::string> hear() {
    for (;;) {
      const size_t end = heard_.find('\n');
      if (end != std::string::npos) {
        const std::string line = heard_.substr(0, end);
        heard_.erase(0, end + 1);
        return line;
      }
      char piece[4096];
      const ssize_t received = ::recv(socket_.get(), piece, sizeof piece, 0);
      if (received <= 0) {
        return std::nullopt;
      }
      heard_.append(piece, static_cast<size_t>(received));
    }
  }

 private:
  Descriptor socket_;
  std::string heard_;
};

}  // namespace SmbusService
