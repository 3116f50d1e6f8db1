// SPDX-License-Identifier: Apache-2.0
//
// The Halvorsa board's whole front panel, polled each second: what that takes in transactions, in
// time of this machine, and in bits of the buses. Library, client, socket and service are the real
// ones; the board is the virtual one, in this process, so that its counts can be read.
#include <fmt/format.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "bench/Affinity.hpp"
#include "pl/pl.h"
#include "pl/pl_host.h"
#include "test/e2e/BoardFile.hpp"
#include "test/support/BoardService.hpp"
#include "test/support/LibraryClock.hpp"

namespace {

using Doubles::BoardService;
using SmbusService::Board::TransferCount;
using Seconds = std::chrono::duration<double>;

constexpr int kRounds = 300;  // seconds of the board's life; the expanders are read every third

// The host: timers that fire when the bench says so.
struct Timer {
  pl_timer_callback callback;
  void* context;
  bool armed;
};
std::map<pl_timer_handle, Timer> timers;

void fireTimers() {
  for (auto& [handle, timer] : timers) {
    if (std::exchange(timer.armed, false)) {
      timer.callback(timer.context);
    }
  }
}

void require(bool good, const char* what) {
  if (!good) {
    throw std::runtime_error(what);
  }
}

class Panel {
 public:
  Panel() {
    require(pl_system_init(file_.topology().c_str()) == PL_STATUS_OK, "the library does not start");
    for (int port = 1; port <= 62; ++port) {
      const std::string name = fmt::format("{}{}", port <= 48 ? "sfp" : "qsfp", port);
      ports_.push_back(pl_xcvr_add(file_.description("xcvrs", name).c_str()));
    }
    for (int tray = 1; tray <= 4; ++tray) {
      const std::string name = fmt::format("tray{}", tray);
      trays_.push_back(pl_slot_add(file_.description("slots", name).c_str()));
      addLed(name);
    }
    for (const char* name : {"psu1", "psu2", "fan-status"}) {
      addLed(name);
    }
  }

  // One second: what is polled, and every signal of every port and every tray asked for once.
  void look() {
    clock_.advance(std::chrono::seconds(1));
    fireTimers();
    for (pl_xcvr* port : ports_) {
      port->ops->type == PL_XCVR_SFP ? askSfp(port) : askQsfp(port);
    }
    for (pl_slot* tray : trays_) {
      char* descriptor = nullptr;
      const pl_status status = tray->ops->get_presence(tray, &descriptor);
      std::free(descriptor);
      require(status == PL_STATUS_OK || status == PL_STATUS_EMPTY, "a tray does not answer");
    }
  }

  void setLeds(pl_led_status setting) {
    for (pl_led* led : leds_) {
      require(led->ops->set_light_setting(led, setting) == PL_STATUS_OK, "an LED does not follow");
    }
  }

 private:
  void addLed(const std::string& name) {
    leds_.push_back(pl_led_add(file_.description("leds", name).c_str()));
  }

  static void askSfp(pl_xcvr* port) {
    const pl_sfp_ops& ops = port->ops->kind.sfp;
    int value = 0;
    require(ops.get_presence(port) <= 1, "a port does not answer");
    for (const auto get : {ops.get_tx_fault, ops.get_rx_los, ops.get_tx_disable}) {
      require(get(port, &value) == PL_STATUS_OK, "a port does not answer");
    }
  }
  static void askQsfp(pl_xcvr* port) {
    const pl_qsfp_ops& ops = port->ops->kind.qsfp;
    int value = 0;
    require(ops.get_presence(port) <= 1, "a port does not answer");
    for (const auto get : {ops.get_lp_mode, ops.get_reset, ops.get_interrupt}) {
      require(get(port, &value) == PL_STATUS_OK, "a port does not answer");
    }
  }

  E2e::BoardFile file_{NIMBO_BOARDS "/halvorsa/board.json"};
  Doubles::LibraryClock clock_;
  std::vector<pl_xcvr*> ports_;
  std::vector<pl_slot*> trays_;
  std::vector<pl_led*> leds_;
};

// Does something so many times and reports one of them.
template <typename Action>
void measure(const char* what, const BoardService& service, Action action) {
  const uint64_t transactionsBefore = service.transactions();
  const TransferCount before = service.count();
  const auto begin = std::chrono::steady_clock::now();
  for (int round = 0; round < kRounds; ++round) {
    action();
  }
  const double taken = Seconds(std::chrono::steady_clock::now() - begin).count();
  const auto done = static_cast<double>(service.transactions() - transactionsBefore);
  const TransferCount after = service.count();
  const auto bits = static_cast<double>(after.bits - before.bits) / kRounds;
  std::cout << fmt::format(
      "{:<24} {:>8.1f} {:>10.1f} {:>9.0f} {:>10.3f} ms {:>12.0f}/s {:>9.2f} ms {:>9.2f} ms\n", what,
      done / kRounds, static_cast<double>(after.transfers - before.transfers) / kRounds, bits,
      taken / kRounds * 1e3, done / taken, bits / 100e3 * 1e3, bits / 400e3 * 1e3);
}

void run() {
  const BoardService service(NIMBO_BOARDS "/halvorsa/virtual-board.json");
  Panel panel;
  std::cout << fmt::format("{:<24} {:>8} {:>10} {:>9} {:>13} {:>14} {:>12} {:>12}\n", "each",
                           "transact.", "transfers", "bits", "time here", "transactions",
                           "at 100 kHz", "at 400 kHz");
  measure("second of the panel", service, [&] { panel.look(); });
  measure("setting of all 7 LEDs", service, [&] { panel.setLeds(PL_LED_BAD); });
  panel.setLeds(PL_LED_BEACON);
  measure("second with 7 beacons", service, [&] { panel.look(); });
}

}  // namespace

int pl_trace(int, const char*, ...) { return 0; }

pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context) {
  const pl_timer_handle handle = timers.size() + 1;
  timers[handle] = {callback, context, false};
  return handle;
}

int pl_timer_set(pl_timer_handle timer, uint32_t) {
  timers.at(timer).armed = true;
  return 0;
}

void pl_timer_delete(pl_timer_handle timer) { timers.erase(timer); }

void pl_fd_watcher_delete(pl_fd_watcher_handle) {}

int main() {
  try {
    Bench::runOn(Bench::Cores::kOne);  // service and library alike
    run();
  } catch (const std::exception& error) {
    std::cerr << "panel_bench: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
