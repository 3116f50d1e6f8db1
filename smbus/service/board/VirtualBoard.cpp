// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/VirtualBoard.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

#include "smbus/service/board/BoardBuilder.hpp"
#include "smbus/service/board/Random.hpp"
#include "smbus/service/board/Scenario.hpp"

namespace SmbusService::Board {
namespace {

template <typename Map>
std::vector<std::string> namesOf(const Map& map) {
  std::vector<std::string> names;
  for (const auto& [name, value] : map) {
    names.push_back(name);
  }
  return names;
}

Lever leverOf(Net& net) {
  return {.get = [&net] { return net.level() ? 1.0 : 0.0; },
          .set = [&net](double level) { net.drive(level != 0); }};
}

std::unique_lock<std::mutex> take(const Lever& lever) {
  return lever.chipsInUse == nullptr ? std::unique_lock<std::mutex>()
                                     : std::unique_lock(*lever.chipsInUse);
}

void put(const Lever& lever, double value) {
  const auto lock = take(lever);
  lever.set(value);
}

}  // namespace

VirtualBoard::VirtualBoard(Clock& clock)
    : clock_(clock), scenarios_(std::make_unique<ScenarioPlayer>(*this)) {}

VirtualBoard::~VirtualBoard() = default;

void VirtualBoard::close() {
  static_cast<void>(scenarios_->stop());
  faults_.close();
}

std::unique_ptr<VirtualBoard> VirtualBoard::load(const std::string& path, Clock& clock) {
  return build(Config::JsonFile::load(path), clock);
}

std::unique_ptr<VirtualBoard> VirtualBoard::build(const Config::JsonFile& file, Clock& clock) {
  std::unique_ptr<VirtualBoard> board(new VirtualBoard(clock));
  BoardBuilder(*board).build({file, file.document(), ""});
  board->wiring_.settleNow();
  return board;
}

VirtualBus* VirtualBoard::bus(std::string_view name) const {
  const auto found = buses_.find(name);
  return found == buses_.end() ? nullptr : found->second.get();
}

Chip* VirtualBoard::chip(std::string_view label) const {
  const auto found = chips_.find(label);
  return found == chips_.end() ? nullptr : found->second.seat->chip.get();
}

std::vector<std::string> VirtualBoard::labels() const { return namesOf(chips_); }

std::vector<std::string> VirtualBoard::busNames() const { return namesOf(buses_); }

std::vector<std::string> VirtualBoard::eventNames() const { return namesOf(events_); }

std::vector<ChipInfo> VirtualBoard::chips() const {
  std::vector<ChipInfo> infos;
  for (const auto& [label, placed] : chips_) {
    infos.push_back({label, placed.model, placed.seat->address, placed.bus->name(), placed.path});
  }
  return infos;
}

std::vector<VirtualBoard::Reading> VirtualBoard::quantities(std::string_view label) const {
  const auto placed = chips_.find(label);
  if (placed == chips_.end()) {
    return {};
  }
  const std::scoped_lock lock(placed->second.bus->chipsInUse());
  std::vector<Reading> readings;
  for (const Quantity& quantity : placed->second.seat->chip->quantities()) {
    readings.push_back({quantity.name, quantity.unit, quantity.get(), quantity.set != nullptr});
  }
  return readings;
}

std::optional<Register> VirtualBoard::peek(std::string_view label, uint32_t number) const {
  const auto placed = chips_.find(label);
  if (placed == chips_.end()) {
    return std::nullopt;
  }
  const std::scoped_lock lock(placed->second.bus->chipsInUse());
  return placed->second.seat->chip->peek(number);
}

int VirtualBoard::poke(std::string_view label, uint32_t number, uint32_t value) {
  const std::optional<Register> present = peek(label, number);
  if (!present) {
    return ENOENT;
  }
  if (present->bits < 32 && value >> present->bits != 0) {
    return ERANGE;
  }
  const Placed& placed = chips_.find(label)->second;
  bool done = false;
  {
    const std::scoped_lock lock(placed.bus->chipsInUse());
    done = placed.seat->chip->poke(number, value);
  }
  wiring_.settleNow();
  return done ? 0 : EPERM;
}

KindCounts VirtualBoard::countsOf(std::string_view label) const {
  const Placed& placed = chips_.find(label)->second;
  return placed.bus->countsOf(*placed.seat);
}

void VirtualBoard::addFault(BusFault fault) {
  const std::string& target = fault.order.target;
  fault.seed = mix(seedFor(seed_, target) ^ fault.id);
  const auto placed = rowOf(fault.order.kind).ofChips ? chips_.find(target) : chips_.end();
  if (placed == chips_.end()) {
    bus(target)->addFault(std::move(fault));
  } else {
    fault.seat = placed->second.seat;
    placed->second.bus->addFault(std::move(fault));
  }
}

std::optional<Lever> VirtualBoard::findLever(std::string_view name) const {
  if (Net* net = wiring_.net(name)) {
    return leverOf(*net);
  }
  const size_t colon = name.find(':');
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  const auto placed = chips_.find(name.substr(0, colon));
  if (placed == chips_.end()) {
    return std::nullopt;
  }
  auto quantities = placed->second.seat->chip->quantities();
  const auto found = std::ranges::find(quantities, name.substr(colon + 1), &Quantity::name);
  if (found == quantities.end()) {
    return std::nullopt;
  }
  return Lever{found->least, found->most, std::move(found->get), std::move(found->set),
               &placed->second.bus->chipsInUse()};
}

std::optional<double> VirtualBoard::get(std::string_view name) const {
  const std::optional<Lever> lever = findLever(name);
  if (!lever) {
    return std::nullopt;
  }
  const auto lock = take(*lever);
  return lever->get();
}

int VirtualBoard::set(std::string_view name, double value) {
  const std::optional<Lever> lever = findLever(name);
  if (!lever) {
    return ENOENT;
  }
  if (!lever->set) {
    return EPERM;
  }
  if (!(value >= lever->least && value <= lever->most)) {
    return ERANGE;
  }
  put(*lever, value);
  wiring_.settleNow();
  return 0;
}

bool VirtualBoard::release(std::string_view name) {
  Net* net = wiring_.net(name);
  if (net == nullptr) {
    return false;
  }
  net->release();
  wiring_.settleNow();
  return true;
}

BoardEvent::Change VirtualBoard::changeOf(const std::string& name, double value,
                                          const Item& item) const {
  std::optional<Lever> lever = findLever(name);
  if (!lever || !lever->set) {
    item.fail(fmt::format("\"{}\" is neither a net nor a chip's quantity that can be set", name));
  }
  if (value < lever->least || value > lever->most) {
    item.fail(fmt::format("write a value from {} to {}", lever->least, lever->most));
  }
  return {std::move(*lever), value};
}

void VirtualBoard::happen(const BoardEvent& event) {
  for (const auto& [lever, value] : event.changes) {
    put(lever, value);
  }
  wiring_.settleNow();
}

bool VirtualBoard::happen(std::string_view name) {
  const auto event = events_.find(name);
  if (event == events_.end()) {
    return false;
  }
  happen(event->second);
  return true;
}

}  // namespace SmbusService::Board
