// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/VirtualBoard.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Random.hpp"

namespace SmbusService::Board {

class VirtualBoard::Builder {
 public:
  Builder(VirtualBoard& board, Clock& clock) : board_(board), clock_(clock) {}

  void build(const Item& root) {
    Settings settings(root);
    static_cast<void>(settings.text("board", ""));
    seed_ = settings.number("seed", 0, UINT32_MAX, 1);
    settings.forEach("buses", [this](const Item& item) { addBus(item); });
    settings.finish();
  }

 private:
  void addBus(const Item& item) {
    Settings settings(item);
    const std::string name = settings.text("name");
    BusSettings bus;
    bus.clockHz = settings.number("clockHz", 1'000, 5'000'000, bus.clockHz);
    bus.timeout = std::chrono::milliseconds(settings.number("timeoutMs", 1, 60'000, 35));
    bus.waitBusTime = settings.flag("waitBusTime", false);
    const auto [place, isNew] =
        board_.buses_.try_emplace(name, std::make_unique<VirtualBus>(name, bus, clock_));
    if (!isNew) settings.fail("name", fmt::format("there is a bus \"{}\" already", name));
    addChips(settings, place->second->segment());
    settings.finish();
  }

  void addChips(Settings& settings, Segment& segment) {
    settings.forEach("chips", [&](const Item& item) { addChip(item, segment); });
  }

  void addChip(const Item& item, Segment& segment) {
    Settings settings(item);
    const std::string label = settings.text("label");
    if (board_.seats_.contains(label)) {
      settings.fail("label", fmt::format("there is a chip \"{}\" already", label));
    }
    const ChipModel& model = modelOf(settings);
    const auto address = static_cast<uint8_t>(settings.number("address", 0x08, 0x77));
    if (const Seat* other = segment.at(address)) {
      settings.fail("address", fmt::format("\"{}\" sits at this address already", other->label));
    }
    auto chip = model.make(settings, {clock_, seedFor(seed_, label), address});
    if (auto* mux = dynamic_cast<Mux*>(chip.get())) addChannels(settings, *mux);
    settings.finish();
    board_.seats_[label] = &segment.add(label, address, std::move(chip));
  }

  void addChannels(Settings& settings, Mux& mux) {
    settings.forEach("channels", [&](const Item& item) {
      Settings channel(item);
      addChips(channel, mux.channel(channel.number("channel", 0, mux.channels() - 1)));
      channel.finish();
    });
  }

  static const ChipModel& modelOf(Settings& settings) {
    const std::string name = settings.text("model");
    const ChipModel* model = findChipModel(name);
    if (model == nullptr) {
      settings.fail("model", fmt::format("there is no model \"{}\"; the models are \"{}\"", name,
                                         fmt::join(chipModelNames(), "\", \"")));
    }
    return *model;
  }

  VirtualBoard& board_;
  Clock& clock_;
  uint64_t seed_ = 1;
};

std::unique_ptr<VirtualBoard> VirtualBoard::load(const std::string& path, Clock& clock) {
  return build(Config::JsonFile::load(path), clock);
}

std::unique_ptr<VirtualBoard> VirtualBoard::build(const Config::JsonFile& file, Clock& clock) {
  std::unique_ptr<VirtualBoard> board(new VirtualBoard);
  Builder(*board, clock).build({file, file.document(), ""});
  return board;
}

VirtualBus* VirtualBoard::bus(std::string_view name) const {
  const auto found = buses_.find(name);
  return found == buses_.end() ? nullptr : found->second.get();
}

Chip* VirtualBoard::chip(std::string_view label) const {
  const auto found = seats_.find(label);
  return found == seats_.end() ? nullptr : found->second->chip.get();
}

std::vector<std::string> VirtualBoard::busNames() const {
  std::vector<std::string> names;
  for (const auto& [name, bus] : buses_) names.push_back(name);
  return names;
}

}  // namespace SmbusService::Board
