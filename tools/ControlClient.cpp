// SPDX-License-Identifier: Apache-2.0
#include "tools/ControlClient.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <fmt/format.h>

#include "config/JsonValue.hpp"

namespace Nimbo {

namespace {

constexpr const char* kDefaultSocket = "/run/nimbo/smbus.sock";
constexpr const char* kBesideSocket = ".control";
constexpr timeval kPatience{30, 0};
constexpr size_t kLongestAnswer = 64 * 1024 * 1024;

std::string errorText() { return std::generic_category().message(errno); }

const char* variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

}  // namespace

std::string controlPath(const std::string& given) {
  if (!given.empty()) {
    return given;
  }
  if (const char* path = variable("NIMBO_CONTROL_SOCKET")) {
    return path;
  }
  const char* socket = variable("NIMBO_SMBUS_SOCKET");
  return std::string(socket != nullptr ? socket : kDefaultSocket) + kBesideSocket;
}

ControlClient::ControlClient(const std::string& path)
    : path_(path), socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    ::close(socket_);
    throw ControlError("the path " + path + " is too long for a socket");
  }
  path.copy(address.sun_path, path.size());
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
  ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
  if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const std::string error = errorText();
    ::close(socket_);
    throw ControlError(
        fmt::format("no control socket at {}: {} (is smbusd running with a virtual board? "
                    "--control or NIMBO_CONTROL_SOCKET names another)",
                    path, error));
  }
}

ControlClient::~ControlClient() { ::close(socket_); }

rapidjson::Document ControlClient::ask(const std::string& request) {
  send(request + "\n");
  receive();
  rapidjson::Document document;
  document.Parse(answer_.data(), answer_.size());
  if (document.HasParseError() || !document.IsObject() || !document.HasMember("ok") ||
      !document["ok"].IsBool()) {
    throw ControlError(path_ + " does not answer as a service's control socket does");
  }
  if (!document["ok"].GetBool()) {
    const rapidjson::Value* error = Config::member(&document, "error");
    const bool said = error != nullptr && error->IsString();
    throw ControlError(said ? error->GetString() : "the service refused");
  }
  return document;
}

void ControlClient::send(std::string_view line) {
  while (!line.empty()) {
    const ssize_t sent = ::send(socket_, line.data(), line.size(), MSG_NOSIGNAL);
    if (sent < 0) {
      // What the service has said before it closed the connection tells more.
      return;
    }
    line.remove_prefix(static_cast<size_t>(sent));
  }
}

void ControlClient::receive() {
  answer_.clear();
  std::array<char, 16 * 1024> piece{};
  while (answer_.find('\n') == std::string::npos && answer_.size() < kLongestAnswer) {
    const ssize_t received = ::recv(socket_, piece.data(), piece.size(), 0);
    if (received <= 0) {
      throw ControlError(fmt::format("{} gives no answer: {}", path_,
                                     received == 0 ? "the service closed it" : errorText()));
    }
    answer_.append(piece.data(), static_cast<size_t>(received));
  }
  answer_.resize(std::min(answer_.size(), answer_.find('\n')));
}

}  // namespace Nimbo
