// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Executor.hpp"

#include <cerrno>

#include "smbus/service/BusSlot.hpp"
#include "smbus/service/OperationKind.hpp"
#include "smbus/service/ReleaseSuffix.hpp"

namespace SmbusService {

Outcome Executor::run(const Transaction& transaction, uint32_t retries, TimePoint deadline,
                      Smbus::TransactionResponse& response) {
  givenUp_ = false;
  Outcome outcome = attempt(transaction, deadline, response);
  while (outcome.error != 0 && retries > 0 && !givenUp_ && clock_.now() < deadline) {
    --retries;
    outcome = attempt(transaction, deadline, response);
  }
  return outcome;
}

Outcome Executor::attempt(const Transaction& transaction, TimePoint deadline,
                          Smbus::TransactionResponse& response) {
  response.Clear();
  for (size_t i = 0; i < transaction.size(); ++i) {
    const TimePoint now = clock_.now();
    std::string& answer = *response.add_response()->mutable_data();
    const int error = now >= deadline ? ETIMEDOUT : perform(transaction[i], i, now, answer);
    if (error != 0) {
      response.Clear();
      release(transaction, i);
      return {error, i};
    }
  }
  return {};
}

int Executor::perform(const Step& step, size_t index, TimePoint now, std::string& answer) {
  answer.clear();
  watch_.begins(index, now);
  int error = step.bus->bus().perform(step.operation, answer);
  if (!watch_.ends()) {
    givenUp_ = true;
    return ETIMEDOUT;
  }
  if (error == 0 && !answerFits(step.operation, answer.size())) {
    error = EPROTO;
  }
  if (error == 0 && step.pause > Milliseconds(0)) {
    clock_.sleep(step.pause);
  }
  return error;
}

// What fails here has been tried; the transaction has failed already.
void Executor::release(const Transaction& transaction, size_t failed) {
  std::string nothing;
  for (const Step* step : stepsToRelease(transaction, failed)) {
    const auto index = static_cast<size_t>(step - transaction.data());
    (void)perform(*step, index, clock_.now(), nothing);
  }
}

}  // namespace SmbusService
