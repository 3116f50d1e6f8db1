// SPDX-License-Identifier: Apache-2.0
#include "tools/Device.hpp"

#include <exception>

#include "tools/HostServices.hpp"
#include "tools/Status.hpp"
#include "tools/StopNotice.hpp"

namespace Nimbo {

namespace {

// As changes are told: "slots psu2".
std::string fullName(const Kind& kind, const Entry& entry) {
  return std::string(kind.word) + " " + entry.name;
}

}  // namespace

Outcome attempt(const std::function<pl_status()>& call) {
  trace().forget();
  Outcome outcome;
  try {
    outcome.status = call();
    if (outcome.failed()) {
      outcome.reason = trace().reason();
    }
  } catch (const std::exception& error) {
    outcome.broken = true;
    outcome.reason = error.what();
  }
  return outcome;
}

Device addDevice(const Library& library, const Board& board, const Kind& kind, const Entry& entry) {
  const StopNotice notice(fullName(kind, entry));
  Device device{&kind, entry, nullptr, {}};
  device.added = attempt([&] {
    device.record = kind.add(library, board, entry);
    return PL_STATUS_OK;
  });
  if (device.record == nullptr && !device.added.broken) {
    device.added = {PL_STATUS_OK, true, trace().reason()};
  }
  return device;
}

Observation observe(const Device& device) {
  Observation observation{&device, {}, device.added};
  if (device.record == nullptr) {
    return observation;
  }
  const StopNotice notice(fullName(*device.kind, device.entry));
  for (const Column& column : device.kind->columns) {
    Reading reading;
    const Outcome outcome = attempt([&] {
      reading = column.read(device.record, device.entry);
      return reading.status;
    });
    if (outcome.failed()) {
      reading.value = {};
    }
    if (!outcome.ok() && !observation.outcome.failed()) {
      observation.outcome = outcome;
    }
    observation.readings.push_back(std::move(reading));
  }
  return observation;
}

Verdict Observation::verdict() const {
  if (outcome.broken) {
    return {Health::kBad, device->record == nullptr ? "refused by the library" : "failed"};
  }
  if (outcome.status == PL_STATUS_FAULT) {
    return {Health::kBad, device->kind->fault};
  }
  if (!outcome.ok()) {
    return {outcome.failed() ? Health::kBad : Health::kGood, statusWords(outcome.status)};
  }
  return device->kind->judge == nullptr ? Verdict{} : device->kind->judge(readings);
}

std::string Observation::status() const {
  return outcome.broken ? "ERROR" : statusName(outcome.status);
}

}  // namespace Nimbo
