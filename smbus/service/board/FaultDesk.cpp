// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/FaultDesk.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "smbus/service/board/BoardError.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService::Board {
namespace {

std::string leverOf(const FaultOrder& order) {
  return fmt::format("{}:fan{}.stalled", order.target, order.fan);
}

std::vector<std::string> targetsOf(const VirtualBoard& board, const FaultKindRow& kind) {
  std::vector<std::string> names;
  if (kind.ofBuses) {
    names = board.busNames();
  }
  if (kind.ofChips) {
    std::ranges::move(board.labels(), std::back_inserter(names));
  }
  return names;
}

const char* targetWord(const FaultKindRow& kind) {
  if (!kind.ofBuses) {
    return "chip";
  }
  return kind.ofChips ? "chip or bus" : "bus";
}

Time endOf(const FaultOrder& order, Time now) {
  return order.duration > Time::zero() ? now + order.duration : kNever;
}

FaultReport reportOf(const BusFault& fault) {
  return {fault.id, fault.order, fault.until, fault.accesses, fault.strikes};
}

}  // namespace

std::string FaultDesk::complaint(const FaultOrder& order, const VirtualBoard& board) {
  const FaultKindRow& kind = rowOf(order.kind);
  const bool isChip = kind.ofChips && board.chip(order.target) != nullptr;
  const bool isBus = kind.ofBuses && board.bus(order.target) != nullptr;
  if (!isChip && !isBus) {
    return unknownName(targetWord(kind), order.target, targetsOf(board, kind),
                       fmt::format(" for \"{}\"", kind.name));
  }
  if (order.kind == FaultKind::kFanStall && !board.get(leverOf(order))) {
    return fmt::format("the chip \"{}\" has no fan {}", order.target, order.fan);
  }
  return "";
}

uint32_t FaultDesk::inject(const FaultOrder& order, Time now) {
  const std::string wrong = complaint(order, board_);
  if (!wrong.empty()) {
    throw BoardError(wrong);
  }
  const Time until = endOf(order, now);
  uint32_t id = 0;
  {
    const std::scoped_lock lock(mutex_);
    if (closed_) {
      throw BoardError("the board is being switched off");
    }
    id = ++lastId_;
    if (order.kind == FaultKind::kFanStall) {
      stall({id, order, until, leverOf(order), 0});
    } else {
      board_.addFault({.id = id, .order = order, .seat = nullptr, .until = until, .seed = 0});
    }
  }
  if (until != kNever) {
    board_.agenda().add(until, [this, id](Time) { static_cast<void>(clear(id)); });
  }
  return id;
}

void FaultDesk::stall(Stall stall) {
  stall.before = board_.get(stall.lever).value_or(0);
  static_cast<void>(board_.set(stall.lever, 1));
  stalls_.push_back(std::move(stall));
}

// Of several faults of one fan the last that ends gives it back as the first has found it.
bool FaultDesk::endStall(uint32_t id) {
  const auto found = std::ranges::find(stalls_, id, &Stall::id);
  if (found == stalls_.end()) {
    return false;
  }
  const Stall ended = *found;
  stalls_.erase(found);
  const auto other = std::ranges::find(stalls_, ended.lever, &Stall::lever);
  if (other == stalls_.end()) {
    static_cast<void>(board_.set(ended.lever, ended.before));
  } else if (ended.id < other->id) {
    other->before = ended.before;
  }
  return true;
}

std::vector<FaultReport> FaultDesk::inForce() const {
  std::vector<FaultReport> reports;
  for (const std::string& name : board_.busNames()) {
    for (const BusFault& fault : board_.bus(name)->faults()) {
      reports.push_back(reportOf(fault));
    }
  }
  {
    const std::scoped_lock lock(mutex_);
    for (const Stall& stall : stalls_) {
      reports.push_back({stall.id, stall.order, stall.until, 0, 0});
    }
  }
  std::ranges::sort(reports, {}, &FaultReport::id);
  return reports;
}

bool FaultDesk::clear(uint32_t id) {
  {
    const std::scoped_lock lock(mutex_);
    if (endStall(id)) {
      return true;
    }
  }
  return std::ranges::any_of(board_.busNames(), [&](const std::string& name) {
    return board_.bus(name)->removeFault(id);
  });
}

size_t FaultDesk::clearAll(std::string_view target) {
  size_t cleared = 0;
  for (const FaultReport& fault : inForce()) {
    const bool meant = target.empty() || fault.order.target == target;
    if (meant && clear(fault.id)) {
      ++cleared;
    }
  }
  return cleared;
}

void FaultDesk::close() {
  {
    const std::scoped_lock lock(mutex_);
    closed_ = true;
  }
  clearAll();
}

}  // namespace SmbusService::Board
