// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Session.hpp"

#include <fmt/format.h>

namespace SmbusService {

Session::Session(const Context& context, Threads& threads, std::unique_ptr<Transport> transport,
                 Peer peer, Ended ended)
    : context_(context),
      threads_(threads),
      transport_(std::move(transport)),
      peer_(peer),
      ended_(std::move(ended)),
      reader_(*transport_, context_.clock, context_.limits),
      call_(std::make_shared<Call>(context_, peer_)) {}

void Session::start() { continueWith(call_, {}); }

void Session::continueWith(std::shared_ptr<Call> call, std::string owed) {
  const auto self = shared_from_this();
  const bool started = threads_.start([self, call = std::move(call), owed = std::move(owed)] {
    if (self->converse(*call, owed)) {
      self->transport_->shutdown();
      self->ended_(self);
    }
  });
  if (!started) {
    log(Level::kWarning, "closed: no thread to be had");
    transport_->shutdown();
    ended_(self);
  }
}

bool Session::converse(Call& call, std::string_view owed) {
  if (!send(owed)) {
    return true;
  }
  for (;;) {
    const Frame frame = reader_.next();
    if (frame.status != FrameStatus::kMessage) {
      log(frame.status == FrameStatus::kClosed ? Level::kInfo : Level::kWarning,
          describe(frame.status));
      return true;
    }
    switch (call.perform(frame.message)) {
      case Call::Result::kAnswered:
        break;
      case Call::Result::kNotAMessage:
        log(Level::kWarning, "closed: it sent bytes that are no request");
        return true;
      case Call::Result::kGivenUp:
        return false;
    }
    if (const auto remark = call.remark()) {
      log(Level::kInfo, *remark);
    }
    if (!send(call.answer())) {
      return true;
    }
    call.answerSent();
  }
}

bool Session::send(std::string_view frame) {
  const TimePoint deadline = context_.clock.now() + Milliseconds(context_.limits.sendMs);
  const IoResult result = transport_->send(frame, deadline);
  if (result.status != IoStatus::kDone) {
    log(Level::kWarning, result.status == IoStatus::kTimeout ? "closed: it does not take its answer"
                                                             : "closed: its answer cannot be sent");
  }
  return result.status == IoStatus::kDone;
}

void Session::giveUpIfStuck(TimePoint now) {
  const std::optional<std::string> reason = call_->giveUpIfStuck(now);
  if (reason) {
    log(Level::kError, "given up: " + *reason);
    call_ = std::make_shared<Call>(context_, peer_);
    continueWith(call_, failureFrame(*reason));
  }
}

void Session::stop() { transport_->stopReceiving(); }

void Session::log(Level level, std::string_view text) {
  context_.log.line(level, fmt::format("client {}: {}", describe(peer_), text));
}

}  // namespace SmbusService
