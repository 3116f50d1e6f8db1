// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/BusFaults.hpp"

#include <algorithm>

#include "smbus/service/board/Random.hpp"

namespace SmbusService::Board {
namespace {

using enum FaultKind;

void access(BusFault& fault) {
  if (fault.accessed) {
    return;
  }
  fault.accessed = true;
  fault.armed = ++fault.accesses % fault.order.nth == 0;
}

bool spent(const BusFault& fault) {
  return fault.order.count > 0 && fault.strikes >= fault.order.count;
}

bool takesAway(const BusFault& fault, const Seat& seat) {
  return fault.order.kind == kSilent && fault.seat == &seat;
}

}  // namespace

const BusFault* BusFaults::find(uint32_t id) const {
  const auto found = std::ranges::find(faults_, id, &BusFault::id);
  return found == faults_.end() ? nullptr : &*found;
}

void BusFaults::add(BusFault fault) {
  if (fault.seat != nullptr && takesAway(fault, *fault.seat)) {
    fault.seat->away = true;
  }
  faults_.push_back(std::move(fault));
}

bool BusFaults::remove(uint32_t id) {
  const auto found = std::ranges::find(faults_, id, &BusFault::id);
  if (found == faults_.end()) {
    return false;
  }
  Seat* seat = found->seat;
  faults_.erase(found);
  if (seat != nullptr) {
    returned(*seat);
  }
  return true;
}

// If nothing takes the chip away any more, it is back.
void BusFaults::returned(Seat& seat) {
  const bool away =
      std::ranges::any_of(faults_, [&](const BusFault& fault) { return takesAway(fault, seat); });
  if (seat.away && !away) {
    seat.chip->powerOn();
  }
  seat.away = away;
}

void BusFaults::begin() {
  for (BusFault& fault : faults_) {
    if (fault.seat == nullptr) {
      access(fault);
    }
  }
}

void BusFaults::end() {
  std::vector<uint32_t> over;
  for (BusFault& fault : faults_) {
    if (fault.struck) {
      ++fault.strikes;
    }
    fault.accessed = fault.armed = fault.struck = false;
    if (spent(fault)) {
      over.push_back(fault.id);
    }
  }
  for (const uint32_t id : over) {
    remove(id);
  }
}

void BusFaults::address(const Seat& seat) {
  for (BusFault& fault : faults_) {
    if (fault.seat == &seat) {
      access(fault);
    }
  }
}

BusFault* BusFaults::armed(FaultKind kind, const Seat* seat) {
  const auto found = std::ranges::find_if(faults_, [&](const BusFault& fault) {
    return fault.armed && fault.order.kind == kind && (fault.seat == nullptr || fault.seat == seat);
  });
  return found == faults_.end() ? nullptr : &*found;
}

BusFault* BusFaults::strike(FaultKind kind, const Seat* seat) {
  BusFault* fault = armed(kind, seat);
  if (fault != nullptr) {
    fault->struck = true;
  }
  return fault;
}

// A chip that holds a line does so in every transfer, whomever it addresses.
bool BusFaults::stick(FaultKind kind, Segment& segment) {
  const auto found = std::ranges::find_if(faults_, [&](const BusFault& fault) {
    return fault.order.kind == kind && (fault.seat == nullptr || segment.reaches(*fault.seat));
  });
  if (found == faults_.end()) {
    return false;
  }
  access(*found);
  found->struck = true;
  return true;
}

bool BusFaults::refuses(const Seat& seat, uint32_t byte) {
  BusFault* fault = armed(kNack, &seat);
  if (fault == nullptr || fault->order.bytes != byte) {
    return false;
  }
  fault->struck = true;
  return true;
}

bool BusFaults::cuts(const Seat& seat, uint32_t bytes) {
  BusFault* fault = armed(kStop, &seat);
  if (fault == nullptr || bytes < fault->order.bytes) {
    return false;
  }
  fault->struck = true;
  return true;
}

uint8_t BusFaults::corrupted(const Seat& seat, uint8_t byte) {
  BusFault* fault = strike(kCorrupt, &seat);
  if (fault == nullptr) {
    return byte;
  }
  const uint64_t bit = mix(fault->seed ^ mix(fault->changed++)) % 8;
  return static_cast<uint8_t>(byte ^ (1u << bit));
}

Time BusFaults::delay(const Seat& seat) {
  BusFault* fault = armed(kSlow, &seat);
  if (fault == nullptr || fault->struck) {
    return Time::zero();
  }
  fault->struck = true;
  return fault->order.delay;
}

}  // namespace SmbusService::Board
