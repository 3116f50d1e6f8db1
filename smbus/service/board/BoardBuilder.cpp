// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/BoardBuilder.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "smbus/service/board/BoardError.hpp"
#include "smbus/service/board/Random.hpp"

namespace SmbusService::Board {
namespace {

const ChipModel& modelOf(Settings& settings) {
  const std::string name = settings.text("model");
  const ChipModel* model = findChipModel(name);
  if (model == nullptr) {
    settings.fail("model", fmt::format("there is no model \"{}\"; the models are \"{}\"", name,
                                       fmt::join(chipModelNames(), "\", \"")));
  }
  return *model;
}

// A lever's value: a number, true and false for 1 and 0, or a text that becomes a number.
double valueOf(const Item& item, const Variables& variables) {
  if (item.value.IsBool()) {
    return item.value.GetBool() ? 1 : 0;
  }
  if (item.value.IsNumber()) {
    return item.value.GetDouble();
  }
  const auto number = item.value.IsString() ? parseNumber(variables.fill(item.text(), item))
                                            : std::optional<uint32_t>();
  if (!number) {
    item.fail("write true, false or a number");
  }
  return *number;
}

// Names stand in nets ("label:pin") and in requests, beside "all" and the numbers of faults.
bool isName(const std::string& text) {
  return text.find(':') == std::string::npos && text != "all" && !parseNumber(text);
}

std::string keyOf(const rapidjson::Value& name) {
  return {name.GetString(), name.GetStringLength()};
}

}  // namespace

void BoardBuilder::build(const Item& root) {
  Settings settings(root);
  board_.name_ = settings.text("board", "");
  board_.seed_ = settings.number("seed", 0, UINT32_MAX, 1);
  settings.forEach("buses", [this](const Item& item) { addBus(item); });
  settings.forEachMember("nets", [this](const std::string& name, const Item& item) {
    repeat(item, [&](const Variables& variables) { addNet(name, item, variables); });
  });
  settings.forEachMember("events", [this](const std::string& name, const Item& item) {
    repeat(item, [&](const Variables& variables) { addEvent(name, item, variables); });
  });
  settings.forEach("start", [this](const Item& item) { begin(item); });
  settings.finish();
}

void BoardBuilder::addBus(const Item& item) {
  Settings settings(item);
  const std::string name = newName(settings, "name");
  BusSettings values;
  values.clockHz = settings.number("clockHz", 1'000, 5'000'000, values.clockHz);
  values.timeout = std::chrono::milliseconds(settings.number("timeoutMs", 1, 60'000, 35));
  values.waitBusTime = settings.flag("waitBusTime", false);
  std::unique_ptr<VirtualBus>& bus = board_.buses_[name];
  bus = std::make_unique<VirtualBus>(name, values, board_.clock_, board_.wiring_, board_.agenda_);
  addChips(settings, {*bus, bus->segment(), ""});
  settings.finish();
}

// A name of its own among the board's buses and chips: faults are told by it on which they are.
std::string BoardBuilder::newName(Settings& settings, std::string_view key) const {
  std::string name = settings.text(key);
  if (!isName(name)) {
    settings.fail(key, "write a name without a colon that is no number and not \"all\"");
  }
  const bool ofBus = board_.buses_.contains(name);
  if (ofBus || board_.chips_.contains(name)) {
    settings.fail(key, fmt::format("there is a {} \"{}\" already", ofBus ? "bus" : "chip", name));
  }
  return name;
}

void BoardBuilder::addChips(Settings& settings, const Place& place) {
  settings.forEach("chips", [&](const Item& item) { addChip(item, place); });
}

void BoardBuilder::addChip(const Item& item, const Place& place) {
  Settings settings(item);
  const std::string label = newName(settings, "label");
  const ChipModel& model = modelOf(settings);
  const auto address = static_cast<uint8_t>(settings.number("address", 0x08, 0x77));
  if (const Seat* other = place.segment.at(address)) {
    settings.fail("address", fmt::format("\"{}\" sits at this address already", other->label));
  }
  auto chip = model.make(settings, {board_.clock_, seedFor(board_.seed_, label), address});
  if (auto* mux = dynamic_cast<Mux*>(chip.get())) {
    addChannels(settings, place, label, *mux);
  }
  settings.finish();
  board_.chips_[label] = {&place.segment.add(label, address, std::move(chip)), &place.bus,
                          std::string(model.name), place.path};
}

void BoardBuilder::addChannels(Settings& settings, const Place& place, const std::string& label,
                               Mux& mux) {
  settings.forEach("channels", [&](const Item& item) {
    Settings channel(item);
    const uint32_t number = channel.number("channel", 0, mux.channels() - 1);
    const std::string path =
        fmt::format("{}{}{}.{}", place.path, place.path.empty() ? "" : " ", label, number);
    addChips(channel, {place.bus, mux.channel(number), path});
    channel.finish();
  });
}

void BoardBuilder::addNet(const std::string& pattern, const Item& item,
                          const Variables& variables) {
  const std::string name = variables.fill(pattern, item);
  if (name.empty() || name.find(':') != std::string::npos) {
    item.fail("a net's name is a text without a colon");
  }
  if (board_.wiring_.net(name) != nullptr) {
    item.fail(fmt::format("there is a net \"{}\" already", name));
  }
  Settings settings(item);
  static_cast<void>(settings.find(kRepetitionKey));
  Net& net = board_.wiring_.addNet(name, settings.flag("level", true));
  settings.forEach("pins", [&](const Item& pin) { connect(pin, name, net, variables); });
  settings.finish();
}

// "label:pin", or "!label:pin" for a pin that is high where the net is low.
void BoardBuilder::connect(const Item& item, const std::string& name, Net& net,
                           const Variables& variables) {
  const std::string text = variables.fill(item.text(), item);
  const bool inverted = text.front() == '!';
  const std::string_view pin = std::string_view(text).substr(inverted ? 1 : 0);
  const size_t colon = pin.find(':');
  if (colon == std::string_view::npos) {
    item.fail("write a chip's label and its pin, \"label:pin\", or \"!label:pin\" to invert it");
  }
  const auto placed = board_.chips_.find(pin.substr(0, colon));
  if (placed == board_.chips_.end()) {
    item.fail(unknownName("chip", pin.substr(0, colon), board_.labels()));
  }
  Seat& seat = *placed->second.seat;
  if (!connect(seat, pin.substr(colon + 1), net, inverted)) {
    item.fail(fmt::format("the chip has no pin \"{}\", or it is connected already",
                          pin.substr(colon + 1)));
  }
  board_.wiring_.notePin(name, text);
  board_.wiring_.addChip(*seat.chip, placed->second.bus->chipsInUse());
}

// Every chip can be taken out of its seat, and some have more to do about it than vanish.
bool BoardBuilder::connect(Seat& seat, std::string_view pin, Net& net, bool inverted) {
  if (seat.chip->connect(pin, net, inverted)) {
    return true;
  }
  if (pin != "present" || seat.present.connected()) {
    return false;
  }
  seat.present.connect(net, inverted);
  return true;
}

void BoardBuilder::addEvent(const std::string& pattern, const Item& item,
                            const Variables& variables) {
  const std::string name = variables.fill(pattern, item);
  BoardEvent event;
  for (const auto& member : item.value.GetObject()) {
    const std::string lever = keyOf(member.name);
    if (lever == kRepetitionKey) {
      continue;
    }
    event.changes.push_back(change(lever, item.member(lever, member.value), variables));
  }
  if (!board_.events_.emplace(name, std::move(event)).second) {
    item.fail(fmt::format("there is an event \"{}\" already", name));
  }
}

// The board starts as if these events had happened.
void BoardBuilder::begin(const Item& item) {
  const std::string name = item.text();
  if (!board_.happen(name)) {
    item.fail(unknownName("event", name, board_.eventNames()));
  }
}

BoardEvent::Change BoardBuilder::change(const std::string& pattern, const Item& item,
                                        const Variables& variables) const {
  const std::string name = variables.fill(pattern, item);
  return board_.changeOf(name, valueOf(item, variables), item);
}

}  // namespace SmbusService::Board
