// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Psoc.hpp"

#include <algorithm>
#include <limits>

namespace SmbusService::Board {
namespace {

constexpr uint8_t kPowerCycle = 0x08;
constexpr uint8_t kPowerOff = 0x0A;
constexpr uint8_t kTemperatures = 0x20;
constexpr uint8_t kConfiguration0 = 0x30;
constexpr uint8_t kConfiguration1 = 0x31;
constexpr uint8_t kFanStall = 0x32;
constexpr uint8_t kConfiguration3 = 0x33;
constexpr uint8_t kDuty = 0x3C;  // to 0x3D
constexpr uint8_t kSpeeds = 0x40;

constexpr std::array kWritable = {kPowerCycle,     kPowerOff, kConfiguration0,   kConfiguration1,
                                  kConfiguration3, kDuty,     uint8_t{kDuty + 1}};

constexpr uint16_t kFullDuty = 10'000;  // 100 %

double partOf(unsigned duty) { return double(std::min<unsigned>(duty, kFullDuty)) / kFullDuty; }

template <typename T>
T rounded(double value) {
  constexpr double kMost = std::numeric_limits<T>::max();
  return static_cast<T>(std::clamp(value + 0.5, 0.0, kMost));
}

}  // namespace

Psoc::Psoc(FanPlant plant, uint16_t duty) : plant_(std::move(plant)) {
  put16(kDuty, duty);
  plant_.settle(partOf(duty));
}

void Psoc::put16(uint8_t number, uint16_t value) {
  registers_[number] = static_cast<uint8_t>(value >> 8);
  registers_[number + 1u] = static_cast<uint8_t>(value);
}

void Psoc::showPlant() {
  shown_ = plant_.steps();
  uint8_t stall = 0;
  for (size_t i = 0; i < plant_.fans(); ++i) {
    put16(static_cast<uint8_t>(kSpeeds + 2 * i), rounded<uint16_t>(plant_.rpm(i)));
    if (plant_.stalled(i)) {
      stall = static_cast<uint8_t>(stall | (1u << i));
    }
  }
  registers_[kFanStall] = stall;
  for (size_t i = 0; i < plant_.sensors(); ++i) {
    registers_[kTemperatures + i] = rounded<uint8_t>(plant_.celsius(i));
  }
}

void Psoc::begin() {
  plant_.catchUp();
  if (plant_.steps() != shown_) {
    showPlant();
  }
}

bool Psoc::select(uint8_t pointer) {
  pointer_ = pointer;
  return true;
}

bool Psoc::store(uint8_t byte) {
  static_cast<void>(put(pointer_++, byte));
  return true;
}

// False: the register cannot be written.
bool Psoc::put(uint8_t number, uint8_t byte) {
  if (std::ranges::find(kWritable, number) == kWritable.end()) {
    return false;
  }
  registers_[number] = byte;
  if (number == kDuty + 1) {
    plant_.setDuty(partOf(unsigned{registers_[kDuty]} << 8 | byte));
    showPlant();  // without drive nothing stalls
  }
  return true;
}

std::optional<Register> Psoc::peek(uint32_t number) {
  if (number >= registers_.size()) {
    return std::nullopt;
  }
  begin();
  return Register{registers_[number], 8};
}

bool Psoc::poke(uint32_t number, uint32_t value) {
  begin();
  return put(static_cast<uint8_t>(number), static_cast<uint8_t>(value));
}

std::unique_ptr<Chip> makePsoc(Settings& settings, const ChipContext& context) {
  FanPlant plant(settings, context.seed, context.clock);
  const auto duty = static_cast<uint16_t>(settings.number("duty", 0, kFullDuty, 4000));
  return std::make_unique<Psoc>(std::move(plant), duty);
}

}  // namespace SmbusService::Board
