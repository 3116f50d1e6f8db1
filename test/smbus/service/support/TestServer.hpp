// SPDX-License-Identifier: Apache-2.0
//
// A server in the process of the test, on fake buses, reached through socket pairs. The i-th bus is
// busKey(i).
#pragma once

#include <memory>
#include <vector>

#include "smbus/service/Server.hpp"
#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"
#include "test/smbus/service/support/Messages.hpp"
#include "test/smbus/service/support/TestClient.hpp"

namespace SmbusService {

// A read that goes well on any fake bus, and whether it has.
inline constexpr uint8_t kFakeBusDevice = 0x50;
[[nodiscard]] Smbus::TransactionRequest readWordOn(uint32_t busIndex);
[[nodiscard]] bool isGoodWord(const std::optional<Smbus::TransactionResponse>& response);

class TestServer {
 public:
  explicit TestServer(size_t buses = 1, Limits limits = {},
                      Recording::Recorder* recorder = nullptr);
  // Resumes every bus and stops.
  ~TestServer();

  [[nodiscard]] FakeBus& bus(size_t index = 0) { return *fakes_[index]; }
  [[nodiscard]] Server& server() { return *server_; }
  [[nodiscard]] MemoryLog& log() { return log_; }

  // A client with the credentials of `user`.
  [[nodiscard]] TestClient connect(uid_t user = 1000);

  // Ends every connection and begins anew on the same buses.
  void restart();

  // At the supervisor's last round a bus hung.
  [[nodiscard]] bool sawHung() const { return sawHung_; }

 private:
  void begin();

  Limits limits_;
  Recording::Recorder* recorder_;
  SystemClock clock_;
  MemoryLog log_;
  BusSet buses_;
  std::vector<FakeBus*> fakes_;
  std::atomic<bool> sawHung_{false};
  std::unique_ptr<Server> server_;
};

}  // namespace SmbusService
