// SPDX-License-Identifier: Apache-2.0
//
// The way to the SMBus service: library, client, socket, service and virtual board, against the
// bare cost of asking another process, and against a program started for each access. All of it on
// one core: a wake-up on another costs several times what is measured, and where the kernel puts
// two processes is its own business.
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <iostream>
#include <stdexcept>
#include <string>

#include "Ham/Ham.hpp"
#include "Nimbo.hpp"
#include "NimboUtil/PLSocket.hpp"
#include "bench/Affinity.hpp"
#include "bench/Comparison.hpp"
#include "bench/PingPong.hpp"
#include "smbus/Frame.hpp"
#include "test/support/SmbusdProcess.hpp"

namespace {

using Bench::compare;
using Bench::Comparison;

constexpr const char* kService = R"({
  "virtual_board": "virtual-board.json",
  "buses": [{"master": "SCD", "controller": 0, "accelerator": 0, "bus": 0,
             "backend": {"virtual": "bus"}}]
})";

constexpr const char* kBoard = R"({
  "board": "bench",
  "buses": [{"name": "bus", "chips": [
    {"label": "PSoC", "model": "psoc", "address": "0x4E",
     "fans": [{"maxRpm": 23000}, {"maxRpm": 23000}, {"maxRpm": 23000}, {"maxRpm": 23000}]}]}]
})";

constexpr const char* kTopology = R"([{
  "type": "SCD", "ham": "NimboSmbus", "pci": 0, "accelerators": [{"id": 0, "busses": [{"id": 0,
  "devices": [{"did": 1, "driver": "Dummy", "address": {"address": 78, "busTimeout": 5}}]}]}]}])";

// The fans' speeds: what a host reads most.
constexpr std::array<uint32_t, 4> kWords = {0x40, 0x42, 0x44, 0x46};

void check(int status) {
  if (status != 0) {
    throw std::runtime_error(fmt::format("a batch failed with status {}", status));
  }
}

void readWords(Ham::Ham& ham, size_t count) {
  ham.prepare();
  for (size_t i = 0; i < count; ++i) {
    ham.addRead16(kWords[i % kWords.size()]);
  }
  check(ham.execute());
  for (Ham::Ham::ResponseId id = 0; id < count; ++id) {
    (void)ham.get16(id);
  }
}

// The frames of a batch of `count` words, as the library and the service make them.
Bench::PingPong framesOf(size_t count) {
  Smbus::TransactionRequest request;
  Smbus::TransactionResponse answer;
  for (size_t i = 0; i < count; ++i) {
    Smbus::Request& word = *request.add_request();
    word.set_type(Smbus::Read);
    word.set_size(2);
    word.set_addr(0x0340004E00000040);
    word.set_controlleraddr(0);
    word.set_writeflag(false);
    word.set_mastertype(Smbus::SCD);
    answer.add_response()->set_data("xx");
  }
  return {SmbusFrame::kHeaderSize + request.ByteSizeLong(),
          SmbusFrame::kHeaderSize + answer.ByteSizeLong()};
}

void report(const std::string& what, const Comparison& times, const char* aim) {
  std::cout << fmt::format("{:<58} {:>9.2f} us {:>9.2f} us  {:>8.2f}  ({})\n", what,
                           times.first.count(), times.second.count(), times.first / times.second,
                           aim)
            << std::flush;
}

Ham::Ham& connectedHam() {
  if (nimboLibraryInit("bench", kTopology, 1) != 0) {
    throw std::runtime_error("the library does not start");
  }
  Ham::Ham* ham = Ham::createHam(*Topology::findDevice(1)->driverArgs);
  if (ham == nullptr) {
    throw std::runtime_error("no access to the device");
  }
  return *ham;
}

void againstPingPong(Ham::Ham& ham) {
  Bench::PingPong bare = framesOf(kWords.size());
  const auto batch = [&] { readWords(ham, kWords.size()); };
  const auto pingPong = [&] { bare.call(); };
  const Comparison times = compare(batch, pingPong, {.rounds = 40, .calls = 500});
  report("batch of 4 word reads / bare ping-pong", times, "aim: at most 1.3");
}

void batchAgainstSingles(Ham::Ham& ham) {
  constexpr size_t kReads = 16;
  const auto singles = [&] {
    for (size_t i = 0; i < kReads; ++i) {
      readWords(ham, 1);
    }
  };
  const auto batch = [&] { readWords(ham, kReads); };
  const Comparison times = compare(singles, batch, {.rounds = 40, .calls = 50});
  report("16 single word reads / 16 in a batch", times, "aim: at least 8");
}

constexpr const char* kI2cGet = "/usr/sbin/i2cget";

// Starts the program to its end. Without an i2c adapter that is all it does.
void runI2cGet() {
  const char* const arguments[] = {kI2cGet, "-y", "0", "0x4e", "0x40", "w", nullptr};
  posix_spawn_file_actions_t silent;
  ::posix_spawn_file_actions_init(&silent);
  for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) {
    ::posix_spawn_file_actions_addopen(&silent, fd, "/dev/null", O_WRONLY, 0);
  }
  pid_t pid;
  const int error =
      ::posix_spawn(&pid, kI2cGet, &silent, nullptr, const_cast<char* const*>(arguments), environ);
  ::posix_spawn_file_actions_destroy(&silent);
  if (error != 0) {
    throw std::runtime_error("i2cget does not start");
  }
  ::waitpid(pid, nullptr, 0);
}

void againstProgram(Ham::Ham& ham) {
  if (::access(kI2cGet, X_OK) != 0) {
    std::cout << "one i2cget / one word read: skipped, " << kI2cGet
              << " is not installed (package i2c-tools)\n";
    return;
  }
  const auto wordRead = [&] { readWords(ham, 1); };
  const Comparison times = compare(runI2cGet, wordRead, {.rounds = 20, .calls = 10});
  report("one i2cget started / one word read", times, "no aim");
}

void runAll() {
  Bench::runOn(Bench::Cores::kOne);  // and what it starts
  const Doubles::SmbusdProcess service(kService, kBoard);
  Ham::Ham& ham = connectedHam();
  againstPingPong(ham);
  batchAgainstSingles(ham);
  againstProgram(ham);
}

}  // namespace

int main() {
  try {
    std::cout << fmt::format("{:<58} {:>12} {:>12}  {:>8}\n", "medians of one call", "first",
                             "second", "ratio");
    runAll();
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
