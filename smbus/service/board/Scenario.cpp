// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Scenario.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "smbus/service/board/BoardError.hpp"
#include "smbus/service/board/Random.hpp"

namespace SmbusService::Board {
namespace {

using Act = std::function<void(VirtualBoard& board, Time now)>;

constexpr uint32_t kWeek = 604'800'000;  // ms
constexpr Time kLongest = std::chrono::hours(24) * 365;

double valueOf(const Item& item) {
  if (item.value.IsBool()) {
    return item.value.GetBool() ? 1 : 0;
  }
  if (!item.value.IsNumber()) {
    item.fail("write true, false or a number");
  }
  return item.value.GetDouble();
}

Act happens(const Item& item, const VirtualBoard& board) {
  const std::string name = item.text();
  const std::vector<std::string> known = board.eventNames();
  if (std::ranges::find(known, name) == known.end()) {
    item.fail(unknownName("event", name, known));
  }
  return [name](VirtualBoard& of, Time) { static_cast<void>(of.happen(name)); };
}

Act sets(const Item& item, const VirtualBoard& board) {
  const Settings object(item);  // refuses what is none
  BoardEvent event;
  for (const auto& member : item.value.GetObject()) {
    const std::string name(member.name.GetString(), member.name.GetStringLength());
    const Item value = item.member(name, member.value);
    event.changes.push_back(board.changeOf(name, valueOf(value), value));
  }
  return [event](VirtualBoard& of, Time) { of.happen(event); };
}

Act breaks(const Item& item, const VirtualBoard& board) {
  Settings settings(item);
  const FaultOrder order = readFaultOrder(settings);
  settings.finish();
  const std::string complaint = FaultDesk::complaint(order, board);
  if (!complaint.empty()) {
    settings.fail("target", complaint);
  }
  return [order](VirtualBoard& of, Time now) { of.faults().inject(order, now); };
}

Act clears(const Item& item, const VirtualBoard& board) {
  const std::string target = item.text();
  if (target != "all" && board.chip(target) == nullptr && board.bus(target) == nullptr) {
    item.fail("write \"all\", a chip's label or a bus's name");
  }
  return [target](VirtualBoard& of, Time) { of.faults().clearAll(target == "all" ? "" : target); };
}

// What a step does, by its key.
struct Deed {
  std::string_view key;
  Act (*read)(const Item& item, const VirtualBoard& board);
};
constexpr std::array kDeeds = {Deed{"event", happens}, Deed{"set", sets}, Deed{"fault", breaks},
                               Deed{"clear", clears}};

Act readDeed(const Item& item, Settings& settings, const VirtualBoard& board) {
  Act act;
  for (const Deed& deed : kDeeds) {
    const std::optional<Item> found = settings.find(deed.key);
    if (!found) {
      continue;
    }
    if (act) {
      found->fail("a step does one thing; write another step for this");
    }
    act = deed.read(*found, board);
  }
  if (!act) {
    item.fail("say what happens: \"event\", \"set\", \"fault\" or \"clear\"");
  }
  return act;
}

struct Interval {
  uint32_t least;
  uint32_t most;
};

// A number of milliseconds, or a list of the least and the most.
Interval intervalOf(const Item& item) {
  if (!item.value.IsArray()) {
    const uint32_t number = item.number(1, kWeek);
    return {number, number};
  }
  if (item.value.Size() != 2) {
    item.fail("write one number, or the least and the most");
  }
  const uint32_t least = item.element(0).number(1, kWeek);
  return {least, item.element(1).number(least, kWeek)};
}

// When something takes place that may be repeated, counted from the first time: "repeat" says how
// often and at which intervals.
std::vector<Time> timesOf(Settings& settings, uint64_t seed) {
  std::vector<Time> times = {Time::zero()};
  const std::optional<Item> item = settings.find("repeat");
  if (!item) {
    return times;
  }
  Settings repeat(*item);
  const uint32_t count = repeat.number("times", 1, Scenario::kMostSteps);
  const std::optional<Item> every = repeat.find("everyMs");
  if (!every) {
    item->fail("add the key \"everyMs\"");
  }
  const Interval interval = intervalOf(*every);
  repeat.finish();
  while (times.size() < count) {
    const uint64_t chance = mix(seed ^ mix(times.size())) % (interval.most - interval.least + 1);
    times.push_back(times.back() + std::chrono::milliseconds(interval.least + chance));
    if (times.back() > kLongest) {
      item->fail(
          fmt::format("time {} is more than a year after the first; repeat less", times.size()));
    }
  }
  return times;
}

class Reader {
 public:
  Reader(const VirtualBoard& board, Scenario& scenario) : board_(board), scenario_(scenario) {}

  void read(const Item& root) {
    Settings settings(root);
    scenario_.name = settings.text("scenario", root.file.name());
    seed_ = settings.number("seed", 0, UINT32_MAX, static_cast<uint32_t>(board_.seed()));
    const std::vector<Time> rounds = timesOf(settings, seed_);
    settings.forEach("steps", [&](const Item& item) { readStep(item, rounds); });
    settings.finish();
    if (!settings.has("steps")) {
      settings.fail("", "add the key \"steps\", a list");
    }
    std::ranges::stable_sort(scenario_.steps, {}, &ScenarioStep::at);
  }

 private:
  void readStep(const Item& item, const std::vector<Time>& rounds) {
    Settings settings(item);
    const Time at = std::chrono::milliseconds(settings.number("atMs", 0, kWeek));
    const std::vector<Time> times = timesOf(settings, seedFor(seed_, item.pointer));
    const Act act = readDeed(item, settings, board_);
    settings.finish();
    if (scenario_.steps.size() + rounds.size() * times.size() > Scenario::kMostSteps) {
      item.fail(fmt::format("with this step there are more than {} in all; repeat less",
                            Scenario::kMostSteps));
    }
    for (const Time round : rounds) {
      for (const Time time : times) {
        scenario_.steps.push_back({round + at + time, act});
      }
    }
  }

  const VirtualBoard& board_;
  Scenario& scenario_;
  uint32_t seed_ = 0;
};

}  // namespace

Scenario readScenario(const Config::JsonFile& file, const VirtualBoard& board) {
  Scenario scenario;
  Reader(board, scenario).read({file, file.document(), ""});
  return scenario;
}

void ScenarioPlayer::start(Scenario scenario) {
  const std::scoped_lock lock(mutex_);
  if (run_ && run_->progress.running) {
    throw BoardError(fmt::format("the scenario \"{}\" runs; stop it first", run_->progress.name));
  }
  run_ = std::make_shared<Run>();
  run_->progress = {.name = scenario.name, .steps = scenario.steps.size()};
  run_->scenario = std::move(scenario);
  run_->start = board_.clock().now();
  scheduleNext(run_);
}

bool ScenarioPlayer::stop() {
  const std::scoped_lock lock(mutex_);
  return run_ && std::exchange(run_->progress.running, false);
}

std::optional<ScenarioPlayer::Progress> ScenarioPlayer::progress() const {
  const std::scoped_lock lock(mutex_);
  return run_ ? std::optional(run_->progress) : std::nullopt;
}

// One step at a time is on the agenda.
void ScenarioPlayer::scheduleNext(const std::shared_ptr<Run>& run) {
  const size_t next = run->progress.done;
  run->progress.running = next < run->progress.steps;
  if (run->progress.running) {
    board_.agenda().add(run->start + run->scenario.steps[next].at,
                        [this, run](Time due) { step(run, due); });
  }
}

void ScenarioPlayer::step(const std::shared_ptr<Run>& run, Time now) {
  {
    const std::scoped_lock lock(mutex_);
    if (!run->progress.running) {
      return;
    }
  }
  bool failed = false;
  try {
    run->scenario.steps[run->progress.done].act(board_, now);
  } catch (const BoardError&) {
    failed = true;  // counted, and the others go on
  }
  const std::scoped_lock lock(mutex_);
  run->progress.failed += failed ? 1 : 0;
  ++run->progress.done;
  if (run->progress.running) {
    scheduleNext(run);
  }
}

}  // namespace SmbusService::Board
