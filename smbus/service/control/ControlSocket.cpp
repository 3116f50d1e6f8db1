// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/control/ControlSocket.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <vector>

#include "config/JsonLine.hpp"

namespace SmbusService {
namespace {

constexpr size_t kPiece = 16 * 1024;  // bytes received at a time

bool later(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

int pollTimeout(TimePoint now, TimePoint until) {
  if (until == TimePoint::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<Milliseconds>(until - now).count();
  return static_cast<int>(std::clamp<int64_t>(left, 0, INT_MAX));
}

}  // namespace

ControlSocket::ControlSocket(const SocketSettings& settings, const Limits& limits, Clock& clock,
                             Answer answer, Due due)
    : limits_(limits),
      clock_(clock),
      answer_(std::move(answer)),
      due_(std::move(due)),
      listening_(settings),
      stop_(::eventfd(0, EFD_CLOEXEC)) {
  ::fcntl(listening_.descriptor(), F_SETFL, O_NONBLOCK);
  thread_ = std::thread([this] { serve(); });
}

ControlSocket::~ControlSocket() {
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(stop_.get(), &one, sizeof one);
  thread_.join();
}

bool ControlSocket::hasLine(const Client& client) {
  return client.in.find('\n') != std::string::npos;
}

void ControlSocket::drop(Client& client) {
  client.in.clear();
  client.out.clear();
  client.over = true;
}

void ControlSocket::serve() {
  std::vector<pollfd> watched;
  for (;;) {
    TimePoint until = due_();
    watched = {{stop_.get(), POLLIN, 0}, {listening_.descriptor(), POLLIN, 0}};
    for (const Client& client : clients_) {
      const short events = client.out.empty() ? POLLIN : POLLOUT;
      watched.push_back({client.socket.get(), events, 0});
      until = std::min(until, client.deadline);
      if (client.out.empty() && hasLine(client)) {
        until = clock_.now();
      }
    }
    (void)::poll(watched.data(), watched.size(), pollTimeout(clock_.now(), until));
    if (watched[0].revents != 0) {
      return;
    }
    const TimePoint now = clock_.now();
    size_t i = 2;
    for (Client& client : clients_) {
      turn(client, watched[i++].revents, now);
    }
    clients_.remove_if(
        [](const Client& client) { return client.over && client.out.empty() && !hasLine(client); });
    if (watched[1].revents != 0) {
      accept();
    }
  }
}

void ControlSocket::accept() {
  Descriptor socket(
      ::accept4(listening_.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket.valid()) {
    if (!later(errno)) {
      clock_.sleep(Milliseconds(10));  // out of descriptors: not to spin
    }
    return;
  }
  Client& client = clients_.emplace_back();
  client.socket = std::move(socket);
  if (clients_.size() > limits_.controlConnections) {
    refuse(client, "too many control connections; close one");
    send(client);
    clients_.pop_back();
  }
}

// One step of a conversation: at most one line is answered, so that everybody gets his turn.
void ControlSocket::turn(Client& client, short events, TimePoint now) {
  bool progress = false;
  if (client.out.empty()) {
    if (events != 0 && !hasLine(client)) {
      progress = receive(client);
    }
    answerLine(client);
  }
  if (!client.out.empty()) {
    send(client);
  }
  watchTime(client, progress, now);
}

bool ControlSocket::receive(Client& client) {
  std::array<char, kPiece> piece{};
  const ssize_t received = ::recv(client.socket.get(), piece.data(), piece.size(), 0);
  if (received > 0) {
    client.in.append(piece.data(), static_cast<size_t>(received));
    return true;
  }
  if (received == 0 || !later(errno)) {
    client.over = true;
  }
  return false;
}

void ControlSocket::answerLine(Client& client) {
  const size_t end = client.in.find('\n');
  if (std::min(end, client.in.size()) > limits_.controlLineBytes) {
    refuse(client, "the line is too long (control_line_bytes)");
  } else if (end != std::string::npos) {
    client.out = answer_(std::string_view(client.in).substr(0, end)) + "\n";
    client.in.erase(0, end + 1);
    client.deadline = TimePoint::max();
  }
}

void ControlSocket::refuse(Client& client, std::string_view why) {
  Config::JsonLine line;
  line.put("ok", false);
  line.put("error", why);
  client.out = line.take() + "\n";
  client.in.clear();
  client.over = true;
}

void ControlSocket::send(Client& client) {
  const std::string_view left = std::string_view(client.out).substr(client.sent);
  const ssize_t sent =
      ::send(client.socket.get(), left.data(), left.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent > 0) {
    client.sent += static_cast<size_t>(sent);
    if (client.sent == client.out.size()) {
      client.out.clear();
      client.sent = 0;
    }
  } else if (!later(errno)) {
    drop(client);
  }
}

// A line once begun must end within frameMs, an answer must be taken within sendMs; whoever does
// neither is left. An idle connection stays.
void ControlSocket::watchTime(Client& client, bool progress, TimePoint now) {
  const bool idle = client.in.empty() && client.out.empty();
  if (idle) {
    client.deadline = TimePoint::max();
  } else if (client.deadline == TimePoint::max()) {
    const uint32_t patience = client.out.empty() ? limits_.frameMs : limits_.sendMs;
    client.deadline = now + Milliseconds(patience);
  } else if (now >= client.deadline && !progress) {
    drop(client);
  }
}

}  // namespace SmbusService
