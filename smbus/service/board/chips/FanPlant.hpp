// SPDX-License-Identifier: Apache-2.0
//
// The physics around a fan controller: fans that follow a duty cycle with inertia, and temperatures
// that rise with the load and fall with the air that the fans move. It moves on in fixed steps of
// the board's time, so its state at a moment does not depend on who looked at it before.
//
// Settings:
//   "fans"          [ { "maxRpm": 20000, "stalled": false } ], at most 4; maxRpm is the speed at
//                   full duty, 1 to 65535
//   "ambient"       air temperature at the inlet, degrees Celsius (25)
//   "load"          what is dissipated, 0 idle, 1 full, up to 2 (0.5)
//   "rises"         per sensor, at most 6: degrees above ambient at full load and full air, 0 to
//                   500
//   "noise"         largest deviation of a speed, as a part of it (0.002)
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/BoardClock.hpp"
#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

class FanPlant {
 public:
  static constexpr size_t kMaxFans = 4;
  static constexpr size_t kMaxSensors = 6;

  // The clock outlives the plant.
  FanPlant(Settings& settings, uint64_t seed, BoardClock& clock);

  // Everything is at rest at this duty (0 to 1), as after a long time with it.
  void settle(double duty);

  // Lets the time pass that has passed, with everything as it has been. Whoever changes something
  // calls it first, and whoever looks.
  void catchUp();

  // Moves on with every change that time brings.
  [[nodiscard]] int64_t steps() const { return steps_; }

  void setDuty(double duty);
  void setDuty(size_t fan, double duty) { fans_.at(fan).duty = duty; }

  [[nodiscard]] double load() const { return load_; }
  [[nodiscard]] size_t fans() const { return fans_.size(); }
  [[nodiscard]] size_t sensors() const { return sensors_.size(); }
  [[nodiscard]] double rpm(size_t fan) const;
  [[nodiscard]] double maxRpm(size_t fan) const { return fans_[fan].maxRpm; }
  [[nodiscard]] double celsius(size_t sensor) const { return sensors_[sensor].celsius; }

  // Driven, but (nearly) not turning.
  [[nodiscard]] bool stalled(size_t fan) const;

  // "ambient" and "load"; for each fan from 1 on "fan1.stalled", to be set, and "fan1.rpm"; for
  // each sensor "temperature1". They live as long as the plant stays where it is.
  [[nodiscard]] std::vector<Quantity> quantities();

 private:
  struct Fan {
    double maxRpm;
    bool stalled;
    double duty = 0;  // 0 to 1
    double rpm = 0;
  };
  struct Sensor {
    double rise;
    double celsius = 0;
  };

  [[nodiscard]] double targetRpm(const Fan& fan) const;
  [[nodiscard]] double targetCelsius(const Sensor& sensor) const;
  void step();
  [[nodiscard]] Quantity quantity(std::string name, std::string unit, double& value, double least,
                                  double most);
  [[nodiscard]] Quantity stall(size_t fan);
  [[nodiscard]] Quantity reading(std::string name, std::string unit, std::function<double()> get);

  uint64_t seed_;
  BoardClock& clock_;
  std::vector<Fan> fans_;
  std::vector<Sensor> sensors_;
  double ambient_;
  double load_;
  double noise_;
  int64_t steps_ = 0;
};

}  // namespace SmbusService::Board
