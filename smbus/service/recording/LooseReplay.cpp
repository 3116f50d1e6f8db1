// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/LooseReplay.hpp"

#include <fmt/format.h>

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/RequestText.hpp"

namespace SmbusService::Recording {

namespace {

bool isWrite(int type) { return type == Smbus::Write || type == Smbus::WriteBlock; }

}  // namespace

LooseReplay::LooseReplay(const std::vector<Record>& records, Log& log) : log_(log) {
  for (const Record& record : records) {
    learn(record);
  }
}

std::vector<LooseReplay::Access> LooseReplay::accessesOf(const Smbus::TransactionRequest& message) {
  std::vector<Access> accesses;
  for (int i = 0; i < message.request_size(); ++i) {
    const Smbus::Request& request = message.request(i);
    accesses.push_back(
        {{busOf(request), pathTo(message, i), SmbusAddress::kDevice.get(request.addr()),
          SmbusAddress::kRegister.get(request.addr())},
         request.has_type() ? static_cast<int>(request.type()) : -1,
         request.has_size() ? request.size() : static_cast<uint32_t>(request.data().size())});
  }
  return accesses;
}

// What stands before the request that failed went well, but what it read is not known.
void LooseReplay::learn(const Record& record) {
  const std::vector<Access> accesses = accessesOf(record.request);
  const bool failed = record.response.failed();
  const size_t failedAt = failed ? record.failedRequest.value_or(0) : accesses.size();
  for (size_t i = 0; i < failedAt; ++i) {
    const bool write = isWrite(accesses[i].type);
    if (failed && !write) {
      continue;
    }
    const auto index = static_cast<int>(i);
    places_.insert(accesses[i].place);
    histories_[accesses[i]].outcomes.push_back(
        {failed ? "" : record.response.response(index).data(), std::nullopt});
    if (write) {
      recorded_[accesses[i].place] = record.request.request(index).data();
    }
  }
  if (failedAt < accesses.size()) {
    histories_[accesses[failedAt]].outcomes.push_back({"", record.response.reason()});
  }
}

std::optional<LooseReplay::Outcome> LooseReplay::written(const Access& access) const {
  for (const auto* values : {&written_, &recorded_}) {
    const auto value = values->find(access.place);
    if (value != values->end() && !value->second.empty() &&
        (access.type == Smbus::ReadBlock || value->second.size() == access.size)) {
      return Outcome{value->second, std::nullopt};
    }
    if (histories_.contains(access)) {
      break;  // what was read last says more than what the recording wrote
    }
  }
  return std::nullopt;
}

LooseReplay::Outcome LooseReplay::unknown(const Smbus::Request& request, int index) const {
  const std::string reason =
      fmt::format("replay: request {}: the recording has no {}", index, describe(request));
  log_.line(Level::kWarning, reason);
  return {"", reason};
}

LooseReplay::Outcome LooseReplay::outcome(const Access& access, const Smbus::Request& request,
                                          int index) {
  const auto found = histories_.find(access);
  const bool known = found != histories_.end();
  if (known && found->second.next < found->second.outcomes.size()) {
    if (!isWrite(access.type)) {
      written_.erase(access.place);
    }
    return found->second.outcomes[found->second.next++];
  }
  if (known && (isWrite(access.type) || found->second.outcomes.back().reason)) {
    return found->second.outcomes.back();
  }
  if (isWrite(access.type) && access.size > 0 && places_.contains(access.place)) {
    return {};
  }
  if (const auto value = written(access); value && !isWrite(access.type)) {
    return *value;
  }
  return known ? found->second.outcomes.back() : unknown(request, index);
}

Smbus::TransactionResponse LooseReplay::answer(const Smbus::TransactionRequest& request) {
  const std::lock_guard lock(mutex_);
  const std::vector<Access> accesses = accessesOf(request);
  Smbus::TransactionResponse response;
  for (int i = 0; i < request.request_size(); ++i) {
    const Access& access = accesses[static_cast<size_t>(i)];
    const Outcome outcome = this->outcome(access, request.request(i), i);
    if (outcome.reason) {
      response.Clear();
      response.set_failed(true);
      response.set_reason(*outcome.reason);
      return response;
    }
    response.add_response()->set_data(outcome.data);
    if (isWrite(access.type)) {
      written_[access.place] = request.request(i).data();
    }
  }
  return response;
}

}  // namespace SmbusService::Recording
