// SPDX-License-Identifier: Apache-2.0
#include "test/support/ScriptedService.hpp"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "smbus/Frame.hpp"
#include "test/support/TextMessage.hpp"

namespace Doubles {

namespace {

int checked(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return result;
}

int listenAt(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = checked(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  checked(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
  checked(::listen(fd, 16), "listen");
  return fd;
}

// Signals that a test raises are for its own thread.
template <typename Function>
std::thread threadWithoutSignals(Function function) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread(function);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

// A client that is gone by then is the test's business.
void sendPieces(int fd, const std::vector<std::string>& pieces) {
  for (const std::string& piece : pieces) {
    size_t sent = 0;
    while (sent < piece.size()) {
      const ssize_t count = ::send(fd, &piece[sent], piece.size() - sent, MSG_NOSIGNAL);
      if (count < 0) {
        return;
      }
      sent += static_cast<size_t>(count);
    }
  }
}

}  // namespace

ScriptedService::ScriptedService() {
  std::string pattern = std::filesystem::temp_directory_path() / "nimbo-service-XXXXXX";
  checked(::mkdtemp(pattern.data()) == nullptr ? -1 : 0, pattern.c_str());
  directory_ = pattern;
  ::setenv("NIMBO_SMBUS_SOCKET", path().c_str(), 1);
  start();
}

ScriptedService::~ScriptedService() {
  stop();
  std::filesystem::remove_all(directory_);
  for (const std::string& request : unexpected_) {
    ADD_FAILURE() << request;
  }
  EXPECT_TRUE(script_.empty()) << script_.size() << " requests of the script never came";
}

void ScriptedService::expect(std::string_view requestText, Reply reply) {
  const std::lock_guard lock(mutex_);
  script_.push_back({messageOf<Smbus::TransactionRequest>(requestText), std::move(reply)});
}

void ScriptedService::expectAny(Reply reply) {
  const std::lock_guard lock(mutex_);
  script_.push_back({std::nullopt, std::move(reply)});
}

void ScriptedService::cutNextConnectionAfter(size_t bytes) {
  const std::lock_guard lock(mutex_);
  cutNext_ = bytes;
}

void ScriptedService::sendUnasked(std::string bytes) {
  const std::lock_guard lock(mutex_);
  sendPieces(newest_, {std::move(bytes)});
}

void ScriptedService::stop() {
  if (!thread_.joinable()) {
    return;
  }
  ::eventfd_write(wakeUp_, 1);
  thread_.join();
  closeAll();
  ::close(listener_);
  ::close(wakeUp_);
  std::filesystem::remove(path());
}

void ScriptedService::start() {
  listener_ = listenAt(path());
  wakeUp_ = checked(::eventfd(0, EFD_CLOEXEC), "eventfd");
  thread_ = threadWithoutSignals([this] { serve(); });
}

void ScriptedService::restart() {
  stop();
  start();
}

void ScriptedService::awaitRequests(size_t count) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return dealtWith_ >= count; });
}

std::string ScriptedService::path() const { return directory_ / "smbus.sock"; }

std::vector<Smbus::TransactionRequest> ScriptedService::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

size_t ScriptedService::connections() const {
  const std::lock_guard lock(mutex_);
  return connections_;
}

void ScriptedService::serve() {
  for (;;) {
    std::vector<pollfd> entries{{wakeUp_, POLLIN, 0}, {listener_, POLLIN, 0}};
    for (const Connection& connection : open_) {
      entries.push_back({connection.fd, POLLIN, 0});
    }
    checked(::poll(entries.data(), entries.size(), -1), "poll");
    if (entries[0].revents != 0) {
      return;
    }
    auto entry = entries.begin() + 2;
    for (Connection& connection : open_) {
      if ((entry++)->revents != 0) {
        read(connection);
      }
    }
    open_.remove_if([](const Connection& connection) { return !connection.open; });
    if (entries[1].revents != 0) {
      accept();
    }
  }
}

void ScriptedService::accept() {
  const int fd = checked(::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC), "accept");
  const std::lock_guard lock(mutex_);
  ++connections_;
  newest_ = fd;
  open_.push_back({.fd = fd, .cutAfter = std::exchange(cutNext_, std::nullopt)});
}

void ScriptedService::read(Connection& connection) {
  char bytes[65536];
  const size_t room = connection.cutAfter.value_or(sizeof bytes);
  const ssize_t count = ::recv(connection.fd, bytes, std::min(room, sizeof bytes), 0);
  if (count <= 0 || connection.cutAfter == static_cast<size_t>(count)) {
    hangUp(connection);
    return;
  }
  if (connection.cutAfter) {
    *connection.cutAfter -= static_cast<size_t>(count);
  }
  connection.received.append(bytes, static_cast<size_t>(count));
  takeFrames(connection);
}

void ScriptedService::hangUp(Connection& connection) {
  const std::lock_guard lock(mutex_);  // sendUnasked() may be using it
  ::close(connection.fd);
  connection.open = false;
}

void ScriptedService::takeFrames(Connection& connection) {
  using SmbusFrame::kHeaderSize;
  std::string& received = connection.received;
  while (connection.open && received.size() >= kHeaderSize) {
    const size_t length = SmbusFrame::announcedLength(received.data());
    if (received.size() < kHeaderSize + length) {
      return;
    }
    Smbus::TransactionRequest request;
    EXPECT_TRUE(request.ParseFromArray(&received[kHeaderSize], static_cast<int>(length)));
    received.erase(0, kHeaderSize + length);
    handle(connection, request);
  }
}

void ScriptedService::handle(Connection& connection, const Smbus::TransactionRequest& request) {
  sendLateReplies();
  const Reply reply = nextReply(request);
  if (reply.late) {
    late_.push_back({.fd = connection.fd, .late = reply});
    connection.open = false;
  } else {
    sendPieces(connection.fd, reply.pieces);
    if (reply.hangUp) {
      hangUp(connection);
    }
  }
  const std::lock_guard lock(mutex_);
  ++dealtWith_;
  changed_.notify_all();
}

Reply ScriptedService::nextReply(const Smbus::TransactionRequest& request) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(request);
  if (script_.empty()) {
    unexpected_.push_back("request behind the script's end:\n" + request.DebugString());
    return answer("failed: true reason: 'not in the script'");
  }
  const Step step = std::move(script_.front());
  script_.pop_front();
  if (step.request && step.request->DebugString() != request.DebugString()) {
    unexpected_.push_back("expected:\n" + step.request->DebugString() + "got:\n" +
                          request.DebugString());
    return answer("failed: true reason: 'not as in the script'");
  }
  return step.reply;
}

void ScriptedService::sendLateReplies() {
  for (const Connection& connection : late_) {
    sendPieces(connection.fd, connection.late.pieces);
    ::close(connection.fd);
  }
  late_.clear();
}

void ScriptedService::closeAll() {
  for (std::list<Connection>* connections : {&open_, &late_}) {
    for (const Connection& connection : *connections) {
      ::close(connection.fd);
    }
    connections->clear();
  }
}

}  // namespace Doubles
