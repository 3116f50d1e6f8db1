// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Call.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "smbus/AddressWord.hpp"
#include "smbus/Frame.hpp"
#include "smbus/service/OperationKind.hpp"

namespace SmbusService {

namespace {

// What an idle connection may keep of its last transaction.
constexpr size_t kMostBytesKept = 16 * 1024;
constexpr int kMostRequestsKept = 128;

std::string errorText(int error) { return std::generic_category().message(error); }

void putFrame(const Smbus::TransactionResponse& response, std::string& frame) {
  frame.assign(SmbusFrame::kHeaderSize, '\0');
  response.AppendToString(&frame);
  SmbusFrame::putLength(frame.data(),
                        static_cast<uint32_t>(frame.size() - SmbusFrame::kHeaderSize));
}

// "read byte at register 0x8b"
std::string describe(const Operation& operation) {
  const KindTraits& traits = traitsOf(operation.kind);
  return traits.hasCommand ? fmt::format("{} at register 0x{:02x}", traits.name, operation.command)
                           : traits.name;
}

}  // namespace

std::string failureFrame(const std::string& reason) {
  Smbus::TransactionResponse response;
  response.set_failed(true);
  response.set_reason(reason);
  std::string frame;
  putFrame(response, frame);
  return frame;
}

Call::Result Call::perform(std::string_view message) {
  if (!parse(message)) {
    return Result::kNotAMessage;
  }
  begun_ = context_.clock.now();
  number_ = 0;
  failedRequest_.reset();
  response_.Clear();
  if (context_.replay != nullptr) {
    response_ = context_.replay->answer(request_);
  } else if (const auto refusal =
                 translate(request_, context_.buses, context_.limits, transaction_)) {
    fail(refusal->request, reasonOf(*refusal));
  } else {
    carryOut();
  }
  if (givenUp()) {
    return Result::kGivenUp;
  }
  putFrame(response_, frame_);
  record(message, frame_);
  return Result::kAnswered;
}

bool Call::parse(std::string_view message) {
  requestBytes_ = message.size();
  const std::optional<size_t> requests = countRequests(message);
  return requests && *requests <= context_.limits.requests &&
         request_.ParseFromArray(message.data(), static_cast<int>(message.size()));
}

void Call::carryOut() {
  const TimePoint now = context_.clock.now();
  const BusSlot* missing = hold_.acquire(transaction_, now + Milliseconds(context_.limits.busMs));
  if (missing != nullptr) {
    const auto first = std::find_if(transaction_.begin(), transaction_.end(),
                                    [&](const Step& step) { return step.bus == missing; });
    const auto step = static_cast<size_t>(first - transaction_.begin());
    const char* what = missing->hung() ? "the bus hangs: " : "the bus is held by others: ";
    fail(step, reasonOf(step, what, ETIMEDOUT));
    return;
  }
  end_ = context_.clock.now() + Milliseconds(context_.limits.transactionMs);
  const Outcome outcome = executor_.run(transaction_, retries(), end_, response_);
  if (!givenUp()) {
    takeNumber();
  }
  hold_.release();
  if (outcome.error != 0) {
    fail(outcome.step, reasonOf(outcome.step, "", outcome.error));
  }
}

uint32_t Call::retries() const {
  return std::min(request_.has_retrycount() ? request_.retrycount() : context_.retries,
                  context_.limits.retries);
}

std::string Call::reasonOf(const Refusal& refusal) const {
  const uint64_t word = request_.request(static_cast<int>(refusal.request)).addr();
  return fmt::format("request {} to device 0x{:02x}: {}: {}", refusal.request,
                     SmbusAddress::kDevice.get(word), refusal.what, errorText(refusal.error));
}

std::string Call::reasonOf(size_t step, std::string_view what, int error) const {
  const Step& failed = transaction_[step];
  return fmt::format("request {} ({}) to device 0x{:02x} on {}: {}{}", step,
                     describe(failed.operation), failed.operation.address, failed.bus->name(), what,
                     errorText(error));
}

void Call::fail(size_t request, const std::string& reason) {
  failedRequest_ = request;
  response_.Clear();
  response_.set_failed(true);
  response_.set_reason(reason);
}

void Call::takeNumber() {
  if (context_.recorder != nullptr && number_ == 0) {
    number_ = context_.recorder->takeNumber();
  }
}

void Call::record(std::string_view request, std::string_view frame) {
  if (context_.recorder == nullptr) {
    return;
  }
  takeNumber();
  frame.remove_prefix(SmbusFrame::kHeaderSize);
  context_.recorder->put(
      {number_, begun_, context_.clock.now(), client_, failedRequest_, request, frame});
}

// The stuck thread has the message's bytes, and still reads what was parsed from them.
void Call::recordGivenUp(size_t step, const std::string& reason, TimePoint now) {
  if (context_.recorder == nullptr) {
    return;
  }
  const std::string request = request_.SerializeAsString();
  const std::string frame = failureFrame(reason);
  context_.recorder->put({context_.recorder->takeNumber(), begun_, now, client_, step, request,
                          std::string_view(frame).substr(SmbusFrame::kHeaderSize)});
}

std::optional<std::string> Call::remark() const {
  if (!request_.has_id() && !response_.failed()) {
    return std::nullopt;
  }
  return fmt::format("transaction{}: {}",
                     request_.has_id() ? fmt::format(" id {}", request_.id()) : "",
                     response_.failed() ? response_.reason() : "done");
}

void Call::answerSent() {
  if (request_.request_size() > kMostRequestsKept || requestBytes_ > kMostBytesKept ||
      frame_.size() > kMostBytesKept) {
    request_ = {};
    response_ = {};
    transaction_ = {};
    frame_ = {};
  }
}

bool Call::givenUp() {
  const std::lock_guard lock(mutex_);
  return givenUp_;
}

void Call::begins(size_t step, TimePoint now) {
  const Milliseconds bound(context_.limits.busMs);
  const std::lock_guard lock(mutex_);
  underWay_ = UnderWay{step, now, std::min(now, end_) + bound};
}

bool Call::ends() {
  const std::lock_guard lock(mutex_);
  underWay_.reset();
  return !givenUp_;
}

std::optional<std::string> Call::giveUpIfStuck(TimePoint now) {
  const std::lock_guard lock(mutex_);
  if (givenUp_ || !underWay_ || now < underWay_->deadline) {
    return std::nullopt;
  }
  givenUp_ = true;
  for (BusSlot* slot : hold_.slots()) {  // before the stuck thread can let go of it
    slot->markHung();
  }
  const auto lasted = std::chrono::duration_cast<Milliseconds>(now - underWay_->since);
  const std::string reason =
      reasonOf(underWay_->step, fmt::format("no end after {} ms: ", lasted.count()), ETIMEDOUT);
  recordGivenUp(underWay_->step, reason, now);
  return reason;
}

}  // namespace SmbusService
