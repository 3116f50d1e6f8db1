// SPDX-License-Identifier: Apache-2.0
#include "test/support/BoardService.hpp"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "smbus/service/SocketTransport.hpp"

namespace Doubles {

using namespace SmbusService;

namespace {

// One a process.
std::string socketPath() {
  return std::filesystem::temp_directory_path() /
         ("nimbo-board-" + std::to_string(::getpid()) + ".sock");
}

// Counts what is sent, which is one answer a transaction; counted before its client can know.
class CountingTransport : public SocketTransport {
 public:
  CountingTransport(Descriptor client, Clock& clock, std::atomic<uint64_t>& answers)
      : SocketTransport(std::move(client), clock), answers_(answers) {}

  IoResult send(std::string_view bytes, TimePoint deadline) override {
    ++answers_;
    return SocketTransport::send(bytes, deadline);
  }

 private:
  std::atomic<uint64_t>& answers_;
};

}  // namespace

BoardService::BoardService(const std::string& boardFile)
    : board_(Board::VirtualBoard::load(boardFile, clock_)),
      socket_(SocketSettings{socketPath(), 0600, ""}),
      stop_(::eventfd(0, EFD_CLOEXEC)) {
  for (uint32_t number = 0;; ++number) {
    Board::VirtualBus* const bus = board_->bus("scd0.accel0.bus" + std::to_string(number));
    if (bus == nullptr) {
      break;
    }
    (void)buses_.add({Smbus::SCD, 0, 0, number}, std::shared_ptr<Bus>(board_, bus), clock_);
  }
  server_ =
      std::make_unique<Server>(Context{buses_, limits_, 0, clock_, log_}, [](const BusSlot*) {});
  thread_ = std::thread([this] { serve(); });
  ::setenv("NIMBO_SMBUS_SOCKET", socketPath().c_str(), 1);
}

BoardService::~BoardService() {
  ::eventfd_write(stop_.get(), 1);
  thread_.join();
  (void)server_->stop();  // no bus hangs here
}

void BoardService::serve() {
  Acceptor acceptor(
      socket_.descriptor(), clock_, log_, [this](Descriptor client, const Peer& peer) {
        server_->adopt(
            std::make_unique<CountingTransport>(std::move(client), clock_, transactions_), peer);
      });
  acceptor.run(stop_.get());
}

Board::TransferCount BoardService::count() const {
  Board::TransferCount total;
  for (const std::string& bus : board_->busNames()) {
    total += board_->bus(bus)->counts().all.total();
  }
  return total;
}

}  // namespace Doubles
