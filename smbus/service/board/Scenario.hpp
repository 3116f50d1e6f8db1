// SPDX-License-Identifier: Apache-2.0
//
// A course of events on a board, from a file: events, settings and faults at times, some of them
// again and again at intervals drawn from a seed. docs/virtual-board.md describes the file.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService::Board {

struct ScenarioStep {
  Time at;  // since the scenario's start
  std::function<void(VirtualBoard& board, Time now)> act;
};

struct Scenario {
  static constexpr size_t kMostSteps = 100'000;

  std::string name;
  std::vector<ScenarioStep> steps;  // in order of time

  [[nodiscard]] Time duration() const { return steps.empty() ? Time::zero() : steps.back().at; }
};

// Reads a scenario for this board; whatever it names must be there. Throws Config::FileError.
[[nodiscard]] Scenario readScenario(const Config::JsonFile& file, const VirtualBoard& board);

// Runs one scenario at a time, by the board's agenda. Any thread may use it.
class ScenarioPlayer {
 public:
  struct Progress {
    std::string name;
    size_t steps = 0;
    size_t done = 0;
    size_t failed = 0;  // of those done: they could not be carried out any more
    bool running = false;
  };

  // The board owns the player.
  explicit ScenarioPlayer(VirtualBoard& board) : board_(board) {}

  // From now on. Throws BoardError if a scenario runs.
  void start(Scenario scenario);
  // What has been done stays. False: no scenario ran.
  [[nodiscard]] bool stop();

  // Of the last one; none: there was none yet.
  [[nodiscard]] std::optional<Progress> progress() const;

 private:
  struct Run {
    Scenario scenario;
    Time start{0};
    Progress progress;
  };

  void scheduleNext(const std::shared_ptr<Run>& run);
  void step(const std::shared_ptr<Run>& run, Time now);

  VirtualBoard& board_;
  mutable std::mutex mutex_;  // guards what follows
  std::shared_ptr<Run> run_;
};

}  // namespace SmbusService::Board
