// SPDX-License-Identifier: Apache-2.0
#include "test/smbus/service/support/TestClient.hpp"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "smbus/Frame.hpp"

namespace SmbusService {

namespace {

constexpr int kPatienceMs = 60'000;

bool readable(int socket) {
  pollfd watched{socket, POLLIN, 0};
  return ::poll(&watched, 1, kPatienceMs) == 1;
}

}  // namespace

std::string frameOf(std::string_view message) {
  std::string frame(SmbusFrame::kHeaderSize, '\0');
  SmbusFrame::putLength(frame.data(), static_cast<uint32_t>(message.size()));
  return frame.append(message);
}

std::string frameOf(const Smbus::TransactionRequest& message) {
  return frameOf(message.SerializeAsString());
}

TestClient::TestClient(const std::string& path)
    : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    socket_.close();
  }
}

bool TestClient::sendBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
  return true;
}

bool TestClient::receiveBytes(char* into, size_t count) {
  while (count > 0) {
    const ssize_t received = readable(socket_.get()) ? ::recv(socket_.get(), into, count, 0) : -1;
    if (received <= 0) {
      return false;
    }
    into += received;
    count -= static_cast<size_t>(received);
  }
  return true;
}

std::optional<Smbus::TransactionResponse> TestClient::receive() {
  std::string header(SmbusFrame::kHeaderSize, '\0');
  if (!receiveBytes(header.data(), header.size())) {
    return std::nullopt;
  }
  std::string body(SmbusFrame::announcedLength(header.data()), '\0');
  Smbus::TransactionResponse response;
  if (!receiveBytes(body.data(), body.size()) || !response.ParseFromString(body)) {
    return std::nullopt;
  }
  return response;
}

std::optional<Smbus::TransactionResponse> TestClient::call(
    const Smbus::TransactionRequest& message) {
  return sendMessage(message) ? receive() : std::nullopt;
}

bool TestClient::closedByPeer() {
  char byte = 0;
  return readable(socket_.get()) && ::recv(socket_.get(), &byte, 1, 0) <= 0;
}

}  // namespace SmbusService
