// SPDX-License-Identifier: Apache-2.0
//
// What recording costs: two services on virtual boards that are alike, one of which records, asked
// the same in turns. A call is one transaction, seen by the client that waits for it, or a row of
// them that lasts longer than the recording stays in memory, so that the writer's time is in it.
// All of it on one core: where two processes run decides more than what is measured.
#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "NimboUtil/PLSocket.hpp"
#include "bench/Affinity.hpp"
#include "bench/Comparison.hpp"
#include "smbus/service/recording/RecordingReader.hpp"
#include "test/support/SmbusdProcess.hpp"

namespace {

namespace Recording = SmbusService::Recording;
using Bench::compare;
using Bench::Comparison;
using Bench::Effort;

constexpr int kWords = 4;

std::string configuration(const std::string& record) {
  return R"({"virtual_board": "virtual-board.json", )" +
         (record.empty() ? "" : R"("record": ")" + record + R"(", )") +
         R"("limits": {"log_lines": 1}, "buses": [
              {"master": "SCD", "bus": 0, "backend": {"virtual": "fast"}},
              {"master": "SCD", "bus": 1, "backend": {"virtual": "real"}}]})";
}

// The second bus takes as long as a wire of 400 kHz does.
constexpr const char* kBoard = R"({"board": "bench", "buses": [
  {"name": "fast", "chips": [{"label": "a", "model": "register", "address": "0x4E"}]},
  {"name": "real", "clockHz": 400000, "waitBusTime": true,
   "chips": [{"label": "b", "model": "register", "address": "0x4E"}]}]})";

Smbus::TransactionRequest wordsOf(uint64_t bus) {
  Smbus::TransactionRequest message;
  for (uint64_t i = 0; i < kWords; ++i) {
    Smbus::Request& word = *message.add_request();
    word.set_type(Smbus::Read);
    word.set_size(2);
    word.set_addr(0x0200004E00000040 + (bus << 39) + 2 * i);
    word.set_controlleraddr(0);
    word.set_writeflag(false);
    word.set_mastertype(Smbus::SCD);
  }
  return message;
}

// A service and the one client of it.
class Asked {
 public:
  explicit Asked(const std::string& record) : service_(configuration(record), kBoard) {
    if (socket_.setup() != 0) {  // to the service that was started last
      throw std::runtime_error("no connection to smbusd");
    }
  }

  void ask(Smbus::TransactionRequest& message, int times) {
    for (int i = 0; i < times; ++i) {
      Smbus::TransactionResponse* answer = nullptr;
      const int failed = socket_.sendRequestWait(&message, &answer);
      const std::unique_ptr<Smbus::TransactionResponse> owned(answer);
      if (failed != 0 || owned->failed()) {
        throw std::runtime_error("a transaction failed");
      }
    }
    asked_ += times;
  }
  void stop() { service_.stop(); }
  [[nodiscard]] int asked() const { return asked_; }

 private:
  Doubles::SmbusdProcess service_;
  PlatformLibrary::PLSocket socket_;
  int asked_ = 0;
};

void report(const std::string& what, const Comparison& times, int transactions) {
  const double added = (times.first / times.second - 1) * 100;
  std::cout << fmt::format("{:<50} {:>9.2f} us {:>9.2f} us {:>+8.1f} %\n", what,
                           times.first.count() / transactions, times.second.count() / transactions,
                           added)
            << std::flush;
}

struct Measured {
  const char* name;
  uint64_t bus;
  int row;  // transactions of a call
  Effort effort;
};

void measure(Asked& recorded, Asked& plain, const Measured& it) {
  Smbus::TransactionRequest message = wordsOf(it.bus);
  const auto way = [&](Asked& asked) {
    return [&asked, &message, &it] { asked.ask(message, it.row); };
  };
  report(it.name, compare(way(recorded), way(plain), it.effort), it.row);
}

// A recording that drops would be cheap for the wrong reason.
void reportKept(const std::string& path, int asked) {
  uint64_t kept = 0;
  uint64_t dropped = 0;
  for (const std::string& file : {path + ".1", path}) {
    Recording::RecordingReader reader(file);
    Recording::Line line;
    while (reader.next(line)) {
      kept += std::holds_alternative<Recording::Record>(line) ? 1U : 0U;
      const auto* gap = std::get_if<Recording::Gap>(&line);
      dropped += gap == nullptr ? 0 : gap->transactions;
    }
  }
  std::cout << fmt::format("of {} transactions the last {} are in the files, {} were dropped\n",
                           asked, kept, dropped);
}

constexpr Measured kMeasured[] = {
    {"a transaction as its client sees it", 0, 1, {40, 500}},
    {"a row without pause", 0, 20'000, {10, 1}},
    {"a row on a bus of 400 kHz", 1, 300, {6, 1}},
};

void runAll() {
  Bench::runOn(Bench::Cores::kOne);  // and what it starts
  const auto directory =
      std::filesystem::temp_directory_path() / fmt::format("nimbo-recorder-bench-{}", ::getpid());
  std::filesystem::create_directory(directory);
  const std::string path = directory / "recording";
  {
    Asked recorded(path);
    Asked plain("");
    for (const Measured& it : kMeasured) {
      measure(recorded, plain, it);
    }
    recorded.stop();
    reportKept(path, recorded.asked());
  }
  std::filesystem::remove_all(directory);
}

}  // namespace

int main() {
  try {
    std::cout << fmt::format("{:<50} {:>12} {:>12} {:>10}\n", "medians, of one transaction",
                             "recorded", "not", "added");
    runAll();
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return 0;
}
