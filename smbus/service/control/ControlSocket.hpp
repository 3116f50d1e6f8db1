// SPDX-License-Identifier: Apache-2.0
//
// The control socket: lines in, a line out for each, in order. One thread serves all clients and
// lets happen what is due on the board; it uses no bus, so no bus can keep it.
#pragma once

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "smbus/service/Limits.hpp"
#include "smbus/service/Listener.hpp"

namespace SmbusService {

class ControlSocket {
 public:
  // Given a line without its end, returns another.
  using Answer = std::function<std::string(std::string_view line)>;
  // Does what is due and returns when to call it next; TimePoint::max(): when something was asked.
  using Due = std::function<TimePoint()>;

  // Serves until the end of this object. Throws ListenError. All arguments but the settings
  // outlive it.
  ControlSocket(const SocketSettings& settings, const Limits& limits, Clock& clock, Answer answer,
                Due due);
  ~ControlSocket();
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

 private:
  // At most one answer waits to be sent, and nothing is received meanwhile.
  struct Client {
    Descriptor socket;
    std::string in;
    std::string out;
    size_t sent = 0;                        // of `out`
    TimePoint deadline = TimePoint::max();  // of the line that has begun, or of the answer
    bool over = false;                      // closed once `out` is sent
  };

  static bool hasLine(const Client& client);
  static void drop(Client& client);

  void serve();
  void accept();
  void turn(Client& client, short events, TimePoint now);
  [[nodiscard]] bool receive(Client& client);
  void answerLine(Client& client);
  void refuse(Client& client, std::string_view why);
  void send(Client& client);
  void watchTime(Client& client, bool progress, TimePoint now);

  const Limits& limits_;
  Clock& clock_;
  const Answer answer_;
  const Due due_;
  ListeningSocket listening_;
  Descriptor stop_;
  std::list<Client> clients_;
  std::thread thread_;
};

}  // namespace SmbusService
