// SPDX-License-Identifier: Apache-2.0
//
// What the client makes of the bytes that come back. The first byte of the input is the size of
// the pieces in which the service sends the rest (0: all at once); then it hangs up. The call must
// end as the bytes say, and give back exactly the message that they hold.
#include <google/protobuf/stubs/logging.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "NimboUtil/PLSocket.hpp"
#include "fuzz/Require.hpp"
#include "smbus/Frame.hpp"

namespace {

std::string directory;  // of the service's socket, for this process's life

// Answers one request on each connection and hangs up.
class Service {
 public:
  Service() {
    google::protobuf::SetLogHandler(nullptr);  // its remarks on texts that are no UTF-8
    directory = std::filesystem::temp_directory_path() / "nimbo-fuzz-XXXXXX";
    require(::mkdtemp(directory.data()) != nullptr, "mkdtemp");
    std::atexit([] { std::filesystem::remove_all(directory); });
    const std::string path = directory + "/smbus.sock";
    listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    require(::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "bind");
    require(::listen(listener_, 8) == 0, "listen");
    ::setenv("NIMBO_SMBUS_SOCKET", path.c_str(), 1);
    std::thread([this] { serve(); }).detach();
  }

  void answerWith(std::string bytes, size_t pieceSize) {
    const std::lock_guard lock(mutex_);
    bytes_ = std::move(bytes);
    pieceSize_ = pieceSize;
  }

 private:
  [[noreturn]] void serve() {
    for (;;) {
      const int fd = ::accept(listener_, nullptr, nullptr);
      char request[256];  // longer than the one request, which comes in one piece
      if (::recv(fd, request, sizeof request, 0) > 0) {
        answer(fd);
      }
      ::close(fd);
    }
  }

  void answer(int fd) {
    const std::lock_guard lock(mutex_);
    const size_t size = pieceSize_ == 0 ? bytes_.size() : pieceSize_;
    for (std::string_view rest = bytes_; !rest.empty();) {
      const std::string_view piece = rest.substr(0, size);
      if (::send(fd, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) {
        return;  // the client has seen enough
      }
      rest.remove_prefix(piece.size());
    }
  }

  int listener_ = -1;
  std::mutex mutex_;
  std::string bytes_;
  size_t pieceSize_ = 0;
};

struct Expected {
  int error = 0;
  Smbus::TransactionResponse response;
};

Expected expectedOf(std::string_view bytes) {
  if (bytes.size() < SmbusFrame::kHeaderSize) {
    return {ECONNRESET, {}};
  }
  const uint32_t length = SmbusFrame::announcedLength(bytes.data());
  if (length > SmbusFrame::kMaxMessage) {
    return {EPROTO, {}};
  }
  bytes.remove_prefix(SmbusFrame::kHeaderSize);
  if (bytes.size() < length) {
    return {ECONNRESET, {}};
  }
  Expected expected;
  const bool parses = expected.response.ParseFromArray(bytes.data(), static_cast<int>(length));
  expected.error = parses ? 0 : EPROTO;
  return expected;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Service service;
  static PlatformLibrary::PLSocket socket;
  if (size == 0) {
    return 0;
  }
  // The last connection may not have been hung up yet; the buffers stay.
  require(socket.setup() == 0, "setup");
  const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  service.answerWith(bytes, data[0]);

  Smbus::TransactionRequest request;
  request.add_request()->set_size(1);
  Smbus::TransactionResponse* raw = nullptr;
  errno = 0;
  const int result = socket.sendRequestWait(&request, &raw);
  const int error = errno;
  const std::unique_ptr<Smbus::TransactionResponse> response(raw);

  const Expected expected = expectedOf(bytes);
  require((result == 0) == (expected.error == 0), "success where the bytes are an answer");
  require((response != nullptr) == (result == 0), "a response on success only");
  if (result == 0) {
    require(response->SerializeAsString() == expected.response.SerializeAsString(), "the message");
  } else {
    require(error == expected.error, "the reason of the failure");
  }
  return 0;
}
