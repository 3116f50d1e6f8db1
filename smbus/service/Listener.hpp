// SPDX-License-Identifier: Apache-2.0
//
// The socket at which clients come in, and the loop that accepts them.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "smbus/service/Clock.hpp"
#include "smbus/service/Descriptor.hpp"
#include "smbus/service/Log.hpp"
#include "smbus/service/Peer.hpp"

namespace SmbusService {

struct SocketSettings {
  std::string path;
  mode_t mode = 0660;
  std::string group;  // empty: the service's own
};

// what() says what could not be done and what to do about it.
class ListenError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A listening socket at the path, which is removed at the end. A socket file that nobody listens
// at is replaced; one that is in use is a ListenError.
class ListeningSocket {
 public:
  explicit ListeningSocket(const SocketSettings& settings);
  // One that systemd has made; its file is systemd's.
  explicit ListeningSocket(Descriptor inherited) : socket_(std::move(inherited)) {}
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  [[nodiscard]] int descriptor() const { return socket_.get(); }

 private:
  std::string path_;  // empty: not ours
  Descriptor socket_;
};

// Accepts connections. When the process or the system is out of descriptors, the clients that wait
// are turned away with the help of a spare one, or left waiting for a moment; it never spins.
class Acceptor {
 public:
  using Accepted = std::function<void(Descriptor, const Peer&)>;

  Acceptor(int listening, Clock& clock, Log& log, Accepted accepted);

  // Until `stop` (a descriptor) is readable.
  void run(int stop);

 private:
  void acceptOne();
  void turnOneAway(int error);

  const int listening_;
  Clock& clock_;
  Log& log_;
  const Accepted accepted_;
  Descriptor spare_;
};

}  // namespace SmbusService
