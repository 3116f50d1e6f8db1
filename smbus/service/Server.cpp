// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Server.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace SmbusService {

namespace {

// A stuck operation is noticed this fraction of its bound late at most.
constexpr uint32_t kRoundsPerBound = 10;
constexpr uint32_t kLongestRound = 1000;  // ms; the watchdog is fed once a round

}  // namespace

Server::Server(const Context& context, Round round)
    : context_(context),
      round_(std::move(round)),
      threads_(context.clock),
      admission_(context.limits),
      supervisor_([this] { supervise(); }) {}

Server::~Server() {
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    stopping_.notify_all();
  }
  supervisor_.join();
}

void Server::adopt(std::unique_ptr<Transport> transport, const Peer& peer) {
  std::shared_ptr<Session> session;
  {
    const std::lock_guard lock(mutex_);
    if (const char* why = admission_.enter(peer.uid)) {
      context_.log.line(Level::kWarning,
                        fmt::format("client {}: refused: {}", describe(peer), why));
      return;
    }
    Peer numbered = peer;
    numbered.connection = ++lastConnection_;
    session = std::make_shared<Session>(context_, threads_, std::move(transport), numbered,
                                        [this](const auto& over) { ended(over); });
    sessions_.insert(session);
  }
  context_.log.line(Level::kInfo, fmt::format("client {}: connected", describe(peer)));
  session->start();
}

void Server::ended(const std::shared_ptr<Session>& session) {
  const std::lock_guard lock(mutex_);
  sessions_.erase(session);
  admission_.leave(session->peer().uid);
}

Server::Sessions Server::sessions() {
  const std::lock_guard lock(mutex_);
  return sessions_;
}

size_t Server::connections() { return sessions().size(); }

bool Server::stop() {
  for (const auto& session : sessions()) {
    session->stop();
  }
  return threads_.waitForAll(context_.clock.now() + Milliseconds(context_.limits.stopMs));
}

void Server::supervise() {
  while (pause()) {
    const TimePoint now = context_.clock.now();
    for (const auto& session : sessions()) {
      session->giveUpIfStuck(now);
    }
    round_(context_.buses.firstHung());
  }
}

bool Server::pause() {
  const Milliseconds round(std::clamp(context_.limits.busMs / kRoundsPerBound, 1U, kLongestRound));
  std::unique_lock lock(mutex_);
  if (!stopped_) {
    context_.clock.waitUntil(stopping_, lock, context_.clock.now() + round);
  }
  return !stopped_;
}

}  // namespace SmbusService
