// SPDX-License-Identifier: Apache-2.0
//
// A plain client: frames out, frames in, with nothing clever in between.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/service/Descriptor.hpp"

namespace SmbusService {

// A message as it travels.
[[nodiscard]] std::string frameOf(std::string_view message);
[[nodiscard]] std::string frameOf(const Smbus::TransactionRequest& message);

class TestClient {
 public:
  // Takes a connected socket.
  explicit TestClient(Descriptor socket) : socket_(std::move(socket)) {}
  // Connects; connected() tells whether that went well.
  explicit TestClient(const std::string& path);

  [[nodiscard]] bool connected() const { return socket_.valid(); }
  [[nodiscard]] int descriptor() const { return socket_.get(); }

  // False: the other end has closed.
  bool sendBytes(std::string_view bytes);
  bool sendMessage(const Smbus::TransactionRequest& message) { return sendBytes(frameOf(message)); }

  // Nothing: the other end has closed, or sends what is no answer, or sends nothing for a minute.
  std::optional<Smbus::TransactionResponse> receive();
  std::optional<Smbus::TransactionResponse> call(const Smbus::TransactionRequest& message);

  // The other end closes the connection, within a minute.
  bool closedByPeer();

 private:
  bool receiveBytes(char* into, size_t count);

  Descriptor socket_;
};

}  // namespace SmbusService
