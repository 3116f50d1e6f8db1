// SPDX-License-Identifier: Apache-2.0
//
// The SMBus service on a virtual board, both in this process: what happens to the board, and what
// has gone over its buses, is a call away. Needs no test framework.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "smbus/service/Listener.hpp"
#include "smbus/service/Server.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace Doubles {

class BoardService {
 public:
  // Serves the board's buses scd0.accel0.bus0, ...bus1 and so on as those of SCD 0, accelerator 0,
  // at a socket of its own that NIMBO_SMBUS_SOCKET points at. Throws Config::FileError.
  explicit BoardService(const std::string& boardFile);
  ~BoardService();
  BoardService(const BoardService&) = delete;
  BoardService& operator=(const BoardService&) = delete;

  [[nodiscard]] SmbusService::Board::VirtualBoard& board() { return *board_; }

  // Of all buses since the board was made.
  [[nodiscard]] SmbusService::Board::TransferCount count() const;

  // Answered so far, well or ill.
  [[nodiscard]] uint64_t transactions() const { return transactions_; }

 private:
  class SilentLog : public SmbusService::Log {
   public:
    void line(SmbusService::Level, std::string_view) override {}
  };

  void serve();

  SmbusService::Limits limits_;
  SmbusService::SystemClock clock_;
  SilentLog log_;
  std::shared_ptr<SmbusService::Board::VirtualBoard> board_;
  SmbusService::BusSet buses_;
  std::unique_ptr<SmbusService::Server> server_;
  SmbusService::ListeningSocket socket_;
  SmbusService::Descriptor stop_;
  std::atomic<uint64_t> transactions_{0};
  std::thread thread_;
};

}  // namespace Doubles
