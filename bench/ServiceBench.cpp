// SPDX-License-Identifier: Apache-2.0
//
// What clients of the service cost each other: 8 at a time, each on a bus of its own, against one
// client alone and against 8 on one bus. The buses answer a constant at once, so that everything
// measured is the service's. The three are measured in turns; the ratios are what counts. And what
// the virtual board costs beside such buses, with all threads on one core: where they are moved
// between cores, the moves outweigh everything else.
#include <benchmark/benchmark.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>
#include <thread>
#include <vector>

#include "bench/Affinity.hpp"
#include "smbus/AddressWord.hpp"
#include "smbus/Frame.hpp"
#include "smbus/service/OperationKind.hpp"
#include "smbus/service/Server.hpp"
#include "smbus/service/SocketTransport.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace {

using namespace SmbusService;
using Seconds = std::chrono::duration<double>;

constexpr uint32_t kBuses = 8;
constexpr uint32_t kClients = 8;
constexpr int kCallsOfATurn = 2000;  // of each client

class ConstantBus : public Bus {
 public:
  int perform(const Operation& operation, std::string& answer) override {
    answer.assign(mostAnswer(operation), 'x');
    return 0;
  }
};

class SilentLog : public Log {
 public:
  void line(Level, std::string_view) override {}
};

std::string framed(const std::string& message) {
  std::string frame(SmbusFrame::kHeaderSize, '\0');
  SmbusFrame::putLength(frame.data(), static_cast<uint32_t>(message.size()));
  return frame + message;
}

// Four words of one device, the batch that a host asks for most.
std::string fourWordsOn(uint32_t bus) {
  Smbus::TransactionRequest message;
  for (uint32_t i = 0; i < 4; ++i) {
    uint64_t word = SmbusAddress::kRegister.set(0, 0x40 + 2 * i);
    word = SmbusAddress::kDevice.set(word, 0x4E);
    word = SmbusAddress::kBus.set(word, bus);
    Smbus::Request& request = *message.add_request();
    request.set_type(Smbus::Read);
    request.set_addr(SmbusAddress::kAddressSize.set(word, 1));
    request.set_size(2);
    request.set_mastertype(Smbus::I2C);
  }
  return framed(message.SerializeAsString());
}

class Service {
 public:
  // `makeBus` is given the clock and makes one bus.
  template <typename MakeBus>
  explicit Service(MakeBus makeBus) {
    for (uint32_t bus = 0; bus < kBuses; ++bus) {
      (void)buses_.add({Smbus::I2C, 0, 0, bus}, makeBus(clock_), clock_);
    }
    server_ =
        std::make_unique<Server>(Context{buses_, limits_, 0, clock_, log_}, [](const BusSlot*) {});
  }
  ~Service() { (void)server_->stop(); }

  Descriptor connect() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      throw std::runtime_error("socketpair");
    }
    server_->adopt(std::make_unique<SocketTransport>(Descriptor(ends[0]), clock_), {});
    return Descriptor(ends[1]);
  }

 private:
  Limits limits_;
  SystemClock clock_;
  SilentLog log_;
  BusSet buses_;
  std::unique_ptr<Server> server_;
};

// An answer comes in one piece here: it is small.
void callOften(int socket, const std::string& request) {
  std::array<char, 256> answer{};
  for (int i = 0; i < kCallsOfATurn; ++i) {
    if (::send(socket, request.data(), request.size(), 0) < 0 ||
        ::recv(socket, answer.data(), answer.size(), 0) <= 0) {
      throw std::runtime_error("the service is gone");
    }
  }
}

// Transactions a second of so many clients, on their own bus each or all on bus 0.
double rateOf(const std::vector<Descriptor>& sockets, uint32_t clients, bool ownBuses) {
  const auto begin = std::chrono::steady_clock::now();
  std::vector<std::thread> threads;
  for (uint32_t i = 0; i < clients; ++i) {
    threads.emplace_back(callOften, sockets[i].get(), fourWordsOn(ownBuses ? i : 0));
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const Seconds taken = std::chrono::steady_clock::now() - begin;
  return static_cast<double>(clients) * kCallsOfATurn / taken.count();
}

std::shared_ptr<Bus> constantBus(Clock& /*clock*/) { return std::make_shared<ConstantBus>(); }

// A chip of registers, played byte by byte.
std::shared_ptr<Bus> virtualBus(Clock& clock) {
  constexpr const char* kBoard = R"({"buses": [{"name": "b", "chips": [
    {"label": "chip", "model": "register", "address": "0x4E", "fill": 65}]}]})";
  std::shared_ptr<Board::VirtualBoard> board =
      Board::VirtualBoard::build(Config::JsonFile::parse("board", kBoard), clock);
  return {board, board->bus("b")};
}

void concurrentClients(benchmark::State& state) {
  Service service(constantBus);
  std::vector<Descriptor> sockets;
  for (uint32_t i = 0; i < kClients; ++i) {
    sockets.push_back(service.connect());
  }
  double one = 0;
  double eight = 0;
  double eightOnOneBus = 0;
  for (auto _ : state) {
    one += rateOf(sockets, 1, true);
    eight += rateOf(sockets, kClients, true);
    eightOnOneBus += rateOf(sockets, kClients, false);
  }
  state.counters["8_on_8_buses/1"] = eight / one;
  state.counters["8_on_8_buses/8_on_1_bus"] = eight / eightOnOneBus;
}
BENCHMARK(concurrentClients)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

// What the virtual board costs a transaction: transactions a second with its chips against those
// with a bus that answers a constant at once, of one client.
void virtualBoard(benchmark::State& state) {
  constexpr double kAim = 0.8;
  Bench::runOn(Bench::Cores::kOne);
  Service playing(virtualBus);
  Service constant(constantBus);
  std::vector<Descriptor> toChips;
  std::vector<Descriptor> toConstant;
  toChips.push_back(playing.connect());
  toConstant.push_back(constant.connect());
  double chips = 0;
  double constants = 0;
  for (auto _ : state) {
    chips += rateOf(toChips, 1, true);
    constants += rateOf(toConstant, 1, true);
  }
  Bench::runOn(Bench::Cores::kAll);
  state.counters["virtual_board/constant"] = chips / constants;
  state.counters["aim"] = kAim;
}
BENCHMARK(virtualBoard)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

}  // namespace

BENCHMARK_MAIN();
