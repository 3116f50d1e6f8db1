// SPDX-License-Identifier: Apache-2.0
//
// The transactions of one serving thread, one after the other: from the bytes of a request to the
// frame of its answer.
//
// An operation may never come back from the bus. The supervisor then gives the call up: it takes
// over the answer and the connection, and leaves the call to the stuck thread. Should that thread
// return, it finds the call given up, performs nothing more but the release suffix, lets go of the
// bus and ends.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "smbus/service/BusSet.hpp"
#include "smbus/service/Executor.hpp"
#include "smbus/service/Log.hpp"
#include "smbus/service/Peer.hpp"
#include "smbus/service/Protocol.hpp"
#include "smbus/service/recording/Recorder.hpp"
#include "smbus/service/recording/Replay.hpp"

namespace SmbusService {

// What every connection works with. All of it outlives the server's threads.
struct Context {
  const BusSet& buses;
  const Limits& limits;
  uint32_t retries;  // of a transaction that does not say
  Clock& clock;
  Log& log;
  Recording::Recorder* recorder = nullptr;  // null: nothing is recorded
  Recording::Replay* replay = nullptr;      // answers in place of the buses; null: the buses do
};

// The frame of an answer that says why a transaction failed.
[[nodiscard]] std::string failureFrame(const std::string& reason);

class Call : private OperationWatch {
 public:
  enum class Result { kAnswered, kNotAMessage, kGivenUp };

  explicit Call(const Context& context, const Peer& client = {})
      : context_(context), client_(client), executor_(context.clock, *this) {}

  // For the serving thread. kNotAMessage: the bytes are none, or one with too many requests.
  [[nodiscard]] Result perform(std::string_view message);

  // The answer's frame, after kAnswered and until answerSent().
  [[nodiscard]] std::string_view answer() const { return frame_; }
  // What the log should say of the transaction, if anything: that it failed and why, or that it was
  // done, if it carries an id.
  [[nodiscard]] std::optional<std::string> remark() const;
  // Lets go of the memory of an unusually large transaction: the connection may be idle for long.
  void answerSent();

  // For the supervisor: gives the call up if an operation has been under way for limits.busMs, or
  // is under way limits.busMs after the transaction should have ended. Returns the reason, to be
  // given to the client; nothing, if the call goes on.
  [[nodiscard]] std::optional<std::string> giveUpIfStuck(TimePoint now);

 private:
  struct UnderWay {
    size_t step;
    TimePoint since;
    TimePoint deadline;
  };

  void begins(size_t step, TimePoint now) override;
  bool ends() override;

  [[nodiscard]] bool parse(std::string_view message);
  void carryOut();
  void fail(size_t request, const std::string& reason);
  void takeNumber();
  void record(std::string_view request, std::string_view frame);
  void recordGivenUp(size_t step, const std::string& reason, TimePoint now);
  [[nodiscard]] uint32_t retries() const;
  [[nodiscard]] std::string reasonOf(const Refusal& refusal) const;
  [[nodiscard]] std::string reasonOf(size_t step, std::string_view what, int error) const;
  [[nodiscard]] bool givenUp();

  const Context context_;
  const Peer client_;
  Executor executor_;
  size_t requestBytes_ = 0;
  Smbus::TransactionRequest request_;
  Smbus::TransactionResponse response_;
  Transaction transaction_;
  BusHold hold_;
  std::string frame_;
  TimePoint end_;  // when the transaction under way should be over

  // For the recorder.
  TimePoint begun_;
  uint64_t number_ = 0;
  std::optional<size_t> failedRequest_;

  std::mutex mutex_;  // guards what follows
  std::optional<UnderWay> underWay_;
  bool givenUp_ = false;
};

}  // namespace SmbusService
