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
//   "load"          what the board dissipates, 0 idle to 1 full (0.5)
//   "rises"         per sensor, at most 6: degrees above ambient at full load and full air
//   "noise"         largest deviation of a speed, as a part of it (0.002)
#pragma once

#include <cstdint>
#include <vector>

#include "smbus/service/board/Clock.hpp"
#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

class FanPlant {
 public:
  static constexpr size_t kMaxFans = 4;
  static constexpr size_t kMaxSensors = 6;

  FanPlant(Settings& settings, uint64_t seed);

  // Everything is at rest at `duty` (0 to 1), as after a long time with it.
  void settle(double duty);

  // Lets time pass up to `now`, with the duty as it has been.
  void advance(Time now);

  void setDuty(double duty) { duty_ = duty; }
  void setAmbient(double celsius) { ambient_ = celsius; }
  void setLoad(double load) { load_ = load; }
  void setStalled(size_t fan, bool stalled) { fans_.at(fan).stalled = stalled; }

  [[nodiscard]] size_t fans() const { return fans_.size(); }
  [[nodiscard]] size_t sensors() const { return sensors_.size(); }
  [[nodiscard]] double rpm(size_t fan) const;
  [[nodiscard]] double celsius(size_t sensor) const { return sensors_[sensor].celsius; }

  // Driven, but (nearly) not turning.
  [[nodiscard]] bool stalled(size_t fan) const;

 private:
  struct Fan {
    double maxRpm;
    bool stalled;
    double rpm;
  };
  struct Sensor {
    double rise;
    double celsius;
  };

  [[nodiscard]] double targetRpm(const Fan& fan) const;
  [[nodiscard]] double targetCelsius(const Sensor& sensor) const;
  void step();

  uint64_t seed_;
  std::vector<Fan> fans_;
  std::vector<Sensor> sensors_;
  double ambient_;
  double load_;
  double noise_;
  double duty_ = 0;
  int64_t steps_ = 0;
};

}  // namespace SmbusService::Board
