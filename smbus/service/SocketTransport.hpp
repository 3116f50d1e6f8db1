// SPDX-License-Identifier: Apache-2.0
//
// The transport over a connected stream socket. A request that arrives in one piece costs one
// system call to receive and one to answer.
#pragma once

#include "smbus/service/Descriptor.hpp"
#include "smbus/service/Transport.hpp"

namespace SmbusService {

class SocketTransport : public Transport {
 public:
  SocketTransport(Descriptor socket, Clock& clock) : socket_(std::move(socket)), clock_(clock) {}

  [[nodiscard]] IoResult receive(std::span<char> into, std::optional<TimePoint> deadline) override;
  [[nodiscard]] IoResult send(std::string_view bytes, TimePoint deadline) override;
  void stopReceiving() override;
  void shutdown() override;

 private:
  // Waits for `events` of poll(2).
  [[nodiscard]] IoResult waitFor(short events, TimePoint deadline);

  const Descriptor socket_;
  Clock& clock_;
};

}  // namespace SmbusService
