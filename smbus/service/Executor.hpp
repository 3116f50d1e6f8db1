// SPDX-License-Identifier: Apache-2.0
//
// Carries out a transaction on buses that the caller holds.
#pragma once

#include <cstddef>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/service/Clock.hpp"
#include "smbus/service/Transaction.hpp"

namespace SmbusService {

// Who looks on, in case an operation never ends.
class OperationWatch {
 public:
  virtual ~OperationWatch() = default;
  virtual void begins(size_t step, TimePoint now) = 0;
  // False: the transaction was given up meanwhile, and nothing of it must be done any more but its
  // release.
  [[nodiscard]] virtual bool ends() = 0;
};

// What became of a transaction.
struct Outcome {
  int error = 0;    // an errno value; 0: every step was performed
  size_t step = 0;  // that failed
};

class Executor {
 public:
  Executor(Clock& clock, OperationWatch& watch) : clock_(clock), watch_(watch) {}

  // Performs the steps in order and puts one response for each into `response`; stops at the first
  // that fails, performs the release suffix and leaves `response` empty. Repeats the whole up to
  // `retries` times; begins nothing but the release after `deadline` (ETIMEDOUT) or once the
  // transaction is given up.
  [[nodiscard]] Outcome run(const Transaction& transaction, uint32_t retries, TimePoint deadline,
                            Smbus::TransactionResponse& response);

 private:
  [[nodiscard]] Outcome attempt(const Transaction& transaction, TimePoint deadline,
                                Smbus::TransactionResponse& response);
  [[nodiscard]] int perform(const Step& step, size_t index, TimePoint now, std::string& answer);
  void release(const Transaction& transaction, size_t failed);

  Clock& clock_;
  OperationWatch& watch_;
  bool givenUp_ = false;
};

}  // namespace SmbusService
