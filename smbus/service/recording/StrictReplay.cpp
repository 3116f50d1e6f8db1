// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/StrictReplay.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "smbus/service/recording/RequestText.hpp"

namespace SmbusService::Recording {

namespace {

std::set<std::optional<BusKey>> busesOf(const Smbus::TransactionRequest& message) {
  std::set<std::optional<BusKey>> buses;
  for (const Smbus::Request& request : message.request()) {
    buses.insert(busOf(request));
  }
  return buses;
}

// Where two messages first differ. Empty: nowhere.
std::string difference(const Record& expected, const Smbus::TransactionRequest& given) {
  const auto& wanted = expected.request.request();
  const auto [want, got] = std::mismatch(wanted.begin(), wanted.end(), given.request().begin(),
                                         given.request().end(), same);
  const bool wantMore = want != wanted.end();
  const bool gotMore = got != given.request().end();
  if (!wantMore && !gotMore) {
    return {};
  }
  return fmt::format("transaction {} of the recording has as request {}: {}; given: {}",
                     expected.number, want - wanted.begin(),
                     wantMore ? describe(*want) : "none, it has ended",
                     gotMore ? describe(*got) : "none, the message has ended");
}

Smbus::TransactionResponse failure(const std::string& reason) {
  Smbus::TransactionResponse response;
  response.set_failed(true);
  response.set_reason(reason);
  return response;
}

}  // namespace

StrictReplay::StrictReplay(std::vector<Record> records, Log& log)
    : records_(std::move(records)), log_(log) {
  for (const Record& record : records_) {
    for (const auto& bus : busesOf(record.request)) {
      turns_[bus].push_back(&record);
    }
  }
}

std::string StrictReplay::deviation(const Smbus::TransactionRequest& request) const {
  for (const auto& bus : busesOf(request)) {
    const auto turns = turns_.find(bus);
    if (turns == turns_.end() || turns->second.empty()) {
      return fmt::format("the recording of {} has ended; given: {}",
                         bus ? SmbusService::describe(*bus) : "an unknown bus",
                         describe(request.request(0)));
    }
    std::string different = difference(*turns->second.front(), request);
    if (!different.empty()) {
      return different;
    }
  }
  return {};
}

Smbus::TransactionResponse StrictReplay::answer(const Smbus::TransactionRequest& request) {
  const std::lock_guard lock(mutex_);
  const std::string reason = deviation(request);
  if (!reason.empty()) {
    log_.line(Level::kWarning, "replay: " + reason);
    return failure("replay: " + reason);
  }
  const Record* record = nullptr;
  for (const auto& bus : busesOf(request)) {
    record = turns_[bus].front();
    turns_[bus].pop_front();
  }
  return record == nullptr ? Smbus::TransactionResponse() : record->response;
}

}  // namespace SmbusService::Recording
