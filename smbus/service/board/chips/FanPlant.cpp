// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/FanPlant.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "smbus/service/board/Random.hpp"

namespace SmbusService::Board {
namespace {

constexpr Time kStep = std::chrono::milliseconds(100);
constexpr double kStepSeconds = 0.1;
constexpr double kFanSeconds = 2;      // time constant of a fan
constexpr double kSensorSeconds = 30;  // time constant of a heat sink
constexpr int64_t kForgotten = 6000;   // steps after which the state before no longer shows

constexpr double kStillAir = 0.2;  // cooling without a fan, against that of full air
constexpr double kTurning = 0.05;  // part of full speed below which a fan counts as still
constexpr double kColdest = -40;   // of the air
constexpr double kHottest = 125;
constexpr double kMostRise = 500;    // above ambient
constexpr double kMostLoad = 2;      // an overload
constexpr uint32_t kMaxRpm = 65535;  // what a 16-bit speed register holds

}  // namespace

FanPlant::FanPlant(Settings& settings, uint64_t seed, BoardClock& clock)
    : seed_(seed),
      clock_(clock),
      ambient_(settings.real("ambient", kColdest, kHottest, 25)),
      load_(settings.real("load", 0, kMostLoad, 0.5)),
      noise_(settings.real("noise", 0, 1, 0.002)) {
  settings.forEach("fans", [this](const Item& item) {
    Settings fan(item);
    const double maxRpm = fan.number("maxRpm", 1, kMaxRpm);
    fans_.push_back({.maxRpm = maxRpm, .stalled = fan.flag("stalled", false)});
    fan.finish();
  });
  if (fans_.size() > kMaxFans) {
    settings.fail("fans", fmt::format("at most {} fans", kMaxFans));
  }
  settings.forEach("rises", [this](const Item& item) {
    const double rise = item.value.IsNumber() ? item.value.GetDouble() : -1;
    if (rise < 0 || rise > kMostRise) {
      item.fail(fmt::format("write the sensor's rise in degrees, 0 to {}", kMostRise));
    }
    sensors_.push_back({.rise = rise});
  });
  if (sensors_.size() > kMaxSensors) {
    settings.fail("rises", fmt::format("at most {} sensors", kMaxSensors));
  }
}

double FanPlant::targetRpm(const Fan& fan) const { return fan.stalled ? 0 : fan.maxRpm * fan.duty; }

double FanPlant::targetCelsius(const Sensor& sensor) const {
  double air = 0;  // of full air
  for (const Fan& fan : fans_) {
    air += fan.rpm / fan.maxRpm / static_cast<double>(fans_.size());
  }
  return ambient_ + sensor.rise * load_ / (kStillAir + (1 - kStillAir) * air);
}

void FanPlant::setDuty(double duty) {
  for (Fan& fan : fans_) {
    fan.duty = duty;
  }
}

void FanPlant::settle(double duty) {
  setDuty(duty);
  for (Fan& fan : fans_) {
    fan.rpm = targetRpm(fan);
  }
  for (Sensor& sensor : sensors_) {
    sensor.celsius = targetCelsius(sensor);
  }
}

void FanPlant::step() {
  for (Fan& fan : fans_) {
    fan.rpm += (targetRpm(fan) - fan.rpm) * (kStepSeconds / kFanSeconds);
  }
  for (Sensor& sensor : sensors_) {
    sensor.celsius += (targetCelsius(sensor) - sensor.celsius) * (kStepSeconds / kSensorSeconds);
  }
}

void FanPlant::catchUp() {
  const int64_t until = clock_.now() / kStep;
  for (int64_t left = std::min(until - steps_, kForgotten); left > 0; --left) {
    step();
  }
  steps_ = std::max(steps_, until);
}

double FanPlant::rpm(size_t fan) const {
  const auto position = static_cast<uint64_t>(steps_) * kMaxFans + fan;
  const double rpm = fans_[fan].rpm * (1 + noise_ * deviation(seed_, position));
  return std::min(rpm, double{kMaxRpm});
}

bool FanPlant::stalled(size_t fan) const {
  return fans_[fan].duty > 0 && fans_[fan].rpm < fans_[fan].maxRpm * kTurning;
}

Quantity FanPlant::quantity(std::string name, std::string unit, double& value, double least,
                            double most) {
  return {.name = std::move(name),
          .unit = std::move(unit),
          .least = least,
          .most = most,
          .get = [&value] { return value; },
          .set =
              [this, &value](double to) {
                catchUp();
                value = to;
              }};
}

Quantity FanPlant::stall(size_t fan) {
  return {.name = fmt::format("fan{}.stalled", fan + 1),
          .unit = "",
          .least = 0,
          .most = 1,
          .get = [this, fan] { return fans_[fan].stalled ? 1.0 : 0.0; },
          .set =
              [this, fan](double to) {
                catchUp();
                fans_[fan].stalled = to != 0;
              }};
}

Quantity FanPlant::reading(std::string name, std::string unit, std::function<double()> get) {
  return {.name = std::move(name),
          .unit = std::move(unit),
          .least = 0,
          .most = 0,
          .get =
              [this, get = std::move(get)] {
                catchUp();
                return get();
              },
          .set = {}};
}

std::vector<Quantity> FanPlant::quantities() {
  std::vector<Quantity> all = {quantity("ambient", "C", ambient_, kColdest, kHottest),
                               quantity("load", "", load_, 0, kMostLoad)};
  for (size_t i = 0; i < fans(); ++i) {
    all.push_back(stall(i));
    all.push_back(reading(fmt::format("fan{}.rpm", i + 1), "RPM", [this, i] { return rpm(i); }));
  }
  for (size_t i = 0; i < sensors(); ++i) {
    all.push_back(
        reading(fmt::format("temperature{}", i + 1), "C", [this, i] { return celsius(i); }));
  }
  return all;
}

}  // namespace SmbusService::Board
