// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/BackEnds.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <system_error>

#include "smbus/service/linux/AdapterNames.hpp"
#include "smbus/service/linux/LinuxBus.hpp"

namespace SmbusService {
namespace {

uint32_t adapterNumber(const LinuxBackEnd& backEnd) {
  const auto* number = std::get_if<uint32_t>(&backEnd.adapter);
  return number != nullptr
             ? *number
             : adapterNamed(std::get<std::string>(backEnd.adapter), adapterNames(kI2cDevices));
}

}  // namespace

BackEnds::BackEnds(const Config::JsonFile& file, const Configuration& configuration, Clock& clock)
    : file_(file), configuration_(configuration) {
  if (!configuration.virtualBoard.empty()) {
    board_ = Board::VirtualBoard::load(configuration.virtualBoard, clock);
  }
  for (const BusEntry& entry : configuration.buses) {
    if (const auto* backEnd = std::get_if<VirtualBackEnd>(&entry.backEnd)) {
      (void)openAt(entry.pointer, *backEnd);
    }
  }
}

BackEnds::~BackEnds() = default;

std::shared_ptr<Bus> BackEnds::open(const BusEntry& entry) const {
  return std::visit([&](const auto& backEnd) { return openAt(entry.pointer, backEnd); },
                    entry.backEnd);
}

std::shared_ptr<Bus> BackEnds::openAt(const std::string& pointer,
                                      const LinuxBackEnd& backEnd) const {
  try {
    return std::make_shared<LinuxBus>(openAdapter(adapterNumber(backEnd)), configuration_.force);
  } catch (const std::system_error& error) {
    file_.fail(pointer, fmt::format("cannot open the adapter: {}; load i2c-dev, see that the "
                                    "adapter is there and that the service may use it",
                                    error.what()));
  } catch (const std::runtime_error& error) {
    file_.fail(pointer, error.what());
  }
}

std::shared_ptr<Bus> BackEnds::openAt(const std::string& pointer,
                                      const VirtualBackEnd& backEnd) const {
  Board::VirtualBus* bus = board_->bus(backEnd.bus);
  if (bus == nullptr) {
    file_.fail(pointer, fmt::format("the virtual board {} has no bus \"{}\"; it has: {}",
                                    configuration_.virtualBoard, backEnd.bus,
                                    fmt::join(board_->busNames(), ", ")));
  }
  return {board_, bus};  // the board lives as long as its buses are used
}

}  // namespace SmbusService
