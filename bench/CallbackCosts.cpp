// SPDX-License-Identifier: Apache-2.0
//
// What each callback of each device of the Halvorsa board costs on the buses, as a table for
// docs/performance.md. Every device of the board description is added to the built library, and
// each of its callbacks called once, with nothing cached that a few seconds make old; library,
// client, socket and service are the real ones, the board is the virtual one, in this process.
#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "bench/Callbacks.hpp"
#include "bench/DocumentTable.hpp"
#include "config/JsonValue.hpp"
#include "pl/pl_system.h"
#include "test/e2e/Time.hpp"
#include "test/support/BoardService.hpp"
#include "tools/Session.hpp"
#include "tools/Status.hpp"

namespace {

using Bench::Callback;
using Bench::RecordKind;
using Doubles::BoardService;
using Nimbo::Entry;
using Nimbo::Session;

// Longer than anything is cached; what polls put in a device's memory stays there for good.
constexpr std::chrono::seconds kUntilNothingIsCached{3};

constexpr const char* kName = "callback-costs";

// A record, and what can be called of it.
struct Subject {
  std::string kind;
  std::string driver;
  Nimbo::Record record;
  std::span<const Callback> callbacks;
};

struct Cost {
  std::string status;
  uint64_t transactions;
  uint64_t transfers;
  uint64_t bits;

  bool operator==(const Cost&) const = default;
};

struct Row {
  std::string kind;
  std::string driver;
  const Callback* callback;
  Cost cost;
  std::string again;  // transactions of the same call right after the first
  int devices = 0;

  [[nodiscard]] auto call() const { return std::tie(kind, driver, callback); }
  [[nodiscard]] auto result() const { return std::tie(cost, again); }
};

Subject subject(const Session& session, const RecordKind& kind, std::string name,
                const Entry& entry, const rapidjson::Value* further = nullptr) {
  const Nimbo::Record record =
      kind.add(session.library(), session.board().description(entry, further));
  if (record == nullptr) {
    throw std::runtime_error(session.board().place(entry).text() + ": the library refuses it");
  }
  return {std::move(name), entry.device->driver(), record, kind.callbacks(record)};
}

void addFansOfSupply(const Session& session, const Entry& supply, std::vector<Subject>& subjects) {
  const rapidjson::Value* const fans = Config::member(supply.node, "fans");
  for (rapidjson::SizeType i = 0; fans != nullptr && i < fans->Size(); ++i) {
    subjects.push_back(subject(session, Bench::fanKind(), "fans of psus", supply,
                               Config::member(&(*fans)[i], "args")));
  }
}

// All devices of the board description, then the system, whose callbacks switch it off.
std::vector<Subject> everything(const Session& session) {
  std::vector<Subject> subjects;
  for (const RecordKind& kind : Bench::recordKinds()) {
    for (const Entry& entry : session.board().entries(kind.key)) {
      subjects.push_back(subject(session, kind, kind.key, entry));
    }
  }
  for (const Entry& supply : session.board().entries("psus")) {
    addFansOfSupply(session, supply, subjects);
  }
  pl_system* const system =
      session.library().function<decltype(pl_system_add)>("pl_system_add")("Halvorsa");
  subjects.push_back({"system", "", system, Bench::systemCallbacks()});
  return subjects;
}

std::string call(const Callback& callback, Nimbo::Record record) {
  Bench::Answer answer;
  const Nimbo::Outcome outcome = Nimbo::attempt([&] {
    answer = callback.call(record);
    return answer.value_or(PL_STATUS_OK);
  });
  return outcome.broken ? "throws" : answer ? Nimbo::statusName(*answer) : "null slot";
}

Cost costOf(const BoardService& service, const Callback& callback, Nimbo::Record record) {
  const uint64_t transactions = service.transactions();
  const auto before = service.count();
  std::string status = call(callback, record);
  const auto after = service.count();
  return {std::move(status), service.transactions() - transactions,
          after.transfers - before.transfers, after.bits - before.bits};
}

Row measured(const BoardService& service, const Subject& subject, const Callback& callback) {
  E2e::letPass(kUntilNothingIsCached);
  Row row{
      subject.kind, subject.driver, &callback, costOf(service, callback, subject.record), "", 0};
  if (callback.reads) {
    row.again = std::to_string(costOf(service, callback, subject.record).transactions);
  }
  return row;
}

// Where a row belongs: behind the last of the same callback.
std::vector<Row>::iterator placeOf(const Row& row, std::vector<Row>& rows) {
  const auto last = std::find_if(rows.rbegin(), rows.rend(),
                                 [&](const Row& r) { return r.call() == row.call(); });
  return last == rows.rend() ? rows.end() : last.base();
}

// Devices that do alike share a row.
std::vector<Row> rowsOf(const BoardService& service, const std::vector<Subject>& subjects) {
  std::vector<Row> rows;
  for (const Subject& subject : subjects) {
    for (const Callback& callback : subject.callbacks) {
      const Row row = measured(service, subject, callback);
      auto same = std::ranges::find_if(
          rows, [&](const Row& r) { return r.call() == row.call() && r.result() == row.result(); });
      if (same == rows.end()) {
        same = rows.insert(placeOf(row, rows), row);
      }
      ++same->devices;
    }
  }
  return rows;
}

std::string markdown(const std::vector<Row>& rows) {
  std::string text =
      "| List | Driver | Callback | Devices | Status | Transactions | Transfers | Bits | Again |\n"
      "|---|---|---|---|---|---|---|---|---|\n";
  for (const Row& row : rows) {
    text += fmt::format("| {} | {} | `{}` | {} | {} | {} | {} | {} | {} |\n", row.kind, row.driver,
                        row.callback->name, row.devices, row.cost.status, row.cost.transactions,
                        row.cost.transfers, row.cost.bits, row.again);
  }
  return text;
}

std::string table() {
  const BoardService service(NIMBO_BOARDS "/halvorsa/virtual-board.json");
  Nimbo::Options options;
  options.board = NIMBO_BOARDS "/halvorsa/board.json";
  options.driverLibrary = NIMBO_BUILT_LIBRARY;
  options.live = true;
  const Session session(options);
  return markdown(rowsOf(service, everything(session)));
}

void check(const std::string& document) {
  if (Bench::DocumentTable(document, kName).text() != table()) {
    throw std::runtime_error(document + " does not tell what callbacks cost now; " +
                             "scripts/callback-costs writes it anew");
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Prints what each callback of each device of the Halvorsa board costs");
  std::string checked;
  std::string updated;
  app.add_option("--check", checked, "Compare with the table in this document instead");
  app.add_option("--update", updated, "Write the table into this document instead")
      ->excludes("--check");
  CLI11_PARSE(app, argc, argv);
  try {
    if (!checked.empty()) {
      check(checked);
    } else if (!updated.empty()) {
      Bench::DocumentTable(updated, kName).replaceWith(table());
    } else {
      std::cout << table();
    }
  } catch (const std::exception& error) {
    std::cerr << "callback_costs: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
