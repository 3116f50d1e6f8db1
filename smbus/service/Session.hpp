// SPDX-License-Identifier: Apache-2.0
//
// The conversation with one client: a request, its answer, and so on, on a thread of its own. When
// a call is given up, a fresh thread goes on with the conversation, beginning with the answer that
// the stuck one owes.
#pragma once

#include <memory>

#include "smbus/service/Call.hpp"
#include "smbus/service/FrameReader.hpp"
#include "smbus/service/Peer.hpp"
#include "smbus/service/Threads.hpp"

namespace SmbusService {

class Session : public std::enable_shared_from_this<Session> {
 public:
  // `ended` is called once, when the conversation is over.
  using Ended = std::function<void(const std::shared_ptr<Session>&)>;

  Session(const Context& context, Threads& threads, std::unique_ptr<Transport> transport, Peer peer,
          Ended ended);

  // Begins the conversation. Failing that (no thread), ends it.
  void start();

  // For the supervisor, one thread.
  void giveUpIfStuck(TimePoint now);

  // Lets the conversation end after what has been received already is answered.
  void stop();

  [[nodiscard]] const Peer& peer() const { return peer_; }

 private:
  void continueWith(std::shared_ptr<Call> call, std::string owed);
  // False: a newer thread has the conversation.
  [[nodiscard]] bool converse(Call& call, std::string_view owed);
  [[nodiscard]] bool send(std::string_view frame);
  void log(Level level, std::string_view text);

  const Context context_;
  Threads& threads_;
  const std::unique_ptr<Transport> transport_;
  const Peer peer_;
  const Ended ended_;
  FrameReader reader_;  // for the thread that has the conversation

  std::shared_ptr<Call> call_;  // of the thread that has the conversation; for the supervisor
};

}  // namespace SmbusService
