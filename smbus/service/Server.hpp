// SPDX-License-Identifier: Apache-2.0
//
// All connections of the service, and the supervisor who looks after the ones that are stuck in a
// bus.
//
// Threads and locks: one thread a connection, which performs its transactions itself; one
// supervisor; and whoever calls adopt(). Locks: the server's (its list of connections), each
// call's (the operation under way) and each bus's (who has it). Of these a thread holds one at a
// time, but for the supervisor, which marks a bus under the lock of the call that is stuck in it.
#pragma once

#include <functional>
#include <set>
#include <thread>

#include "smbus/service/Session.hpp"

namespace SmbusService {

class Server {
 public:
  // Called by the supervisor at each of its rounds, with the first bus that hangs or null.
  using Round = std::function<void(const BusSlot* hung)>;

  // The context must outlive every thread: see stop().
  Server(const Context& context, Round round);
  // Stops the supervisor; stop() must have returned true before.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Serves a connection until its end, unless the limits forbid it.
  void adopt(std::unique_ptr<Transport> transport, const Peer& peer);

  // Answers the transactions under way, ends every connection, and waits for the threads, up to
  // limits.stopMs. False: some thread is stuck in a bus, and nothing that it uses may be
  // destroyed.
  [[nodiscard]] bool stop();

  [[nodiscard]] size_t connections();

 private:
  using Sessions = std::set<std::shared_ptr<Session>>;

  void ended(const std::shared_ptr<Session>& session);
  void supervise();
  [[nodiscard]] Sessions sessions();
  [[nodiscard]] bool pause();

  const Context context_;
  const Round round_;
  Threads threads_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable stopping_;
  bool stopped_ = false;
  uint64_t lastConnection_ = 0;
  Admission admission_;
  Sessions sessions_;

  std::thread supervisor_;
};

}  // namespace SmbusService
