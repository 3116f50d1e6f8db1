// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/control/BoardReport.hpp"

#include <system_error>

#include "smbus/service/OperationKind.hpp"

namespace SmbusService {
namespace {

using namespace Board;

double seconds(Time time) { return std::chrono::duration<double>(time).count(); }

void putChip(const VirtualBoard& board, const ChipInfo& chip, Config::JsonLine& answer) {
  answer.put("label", chip.label);
  answer.put("model", chip.model);
  answer.put("address", uint64_t{chip.address});
  answer.put("bus", chip.bus);
  answer.put("path", chip.path);
  answer.list("quantities", board.quantities(chip.label), [&](const auto& quantity) {
    answer.object([&] {
      answer.put("name", quantity.name);
      answer.put("unit", quantity.unit);
      answer.put("value", quantity.value);
      answer.put("can_be_set", quantity.canBeSet);
    });
  });
}

void putFault(const FaultReport& fault, Time now, Config::JsonLine& answer) {
  const FaultOrder& order = fault.order;
  const auto milliseconds = [](Time time) {
    return static_cast<uint64_t>(std::chrono::duration_cast<Milliseconds>(time).count());
  };
  const auto putUnless = [&](std::string_view key, uint64_t value, uint64_t usual) {
    if (value != usual) {
      answer.put(key, value);
    }
  };
  answer.put("id", uint64_t{fault.id});
  answer.put("kind", rowOf(order.kind).name);
  answer.put("target", order.target);
  putUnless("nth", order.nth, 1);
  putUnless("count", order.count, 0);
  putUnless("bytes", order.bytes, 0);
  putUnless("ms", milliseconds(order.delay), 0);
  if (order.kind == FaultKind::kFanStall) {
    answer.put("fan", uint64_t{order.fan});
  }
  answer.put("accesses", fault.accesses);
  answer.put("strikes", fault.strikes);
  if (fault.until != kNever) {
    answer.put("left_ms", milliseconds(std::max(fault.until - now, Time::zero())));
  }
}

// What bits take at a bus's clock.
double secondsOf(uint64_t bits, const VirtualBus& bus) {
  return static_cast<double>(bits) / bus.settings().clockHz;
}

void putCount(const TransferCount& count, const VirtualBus& bus, Config::JsonLine& answer) {
  answer.put("transfers", count.transfers);
  answer.put("failed", count.failed);
  answer.put("bits", count.bits);
  answer.put("seconds", secondsOf(count.bits, bus));
}

void putTransfer(const Transfer& transfer, const VirtualBus& bus, Config::JsonLine& answer) {
  answer.put("n", transfer.number);
  answer.put("at", seconds(transfer.at));
  answer.put("kind", traitsOf(transfer.kind).name);
  answer.put("address", uint64_t{transfer.address});
  answer.put("chip", transfer.chip);
  answer.put("bits", uint64_t{transfer.bits});
  answer.put("seconds", secondsOf(transfer.bits, bus));
  if (transfer.error != 0) {
    answer.put("failed", std::generic_category().message(transfer.error));
  }
}

void putCounts(const KindCounts& counts, const VirtualBus& bus, Config::JsonLine& answer) {
  putCount(counts.total(), bus, answer);
  std::vector<OperationKind> used;
  for (size_t i = 0; i < kOperationKinds; ++i) {
    const auto kind = static_cast<OperationKind>(i);
    if (counts.of(kind).transfers > 0) {
      used.push_back(kind);
    }
  }
  answer.list("kinds", used, [&](OperationKind kind) {
    answer.object([&] {
      answer.put("kind", traitsOf(kind).name);
      putCount(counts.of(kind), bus, answer);
    });
  });
}

void putBus(const VirtualBoard& board, const VirtualBus& bus, Config::JsonLine& answer) {
  const BusCounts counts = bus.counts();
  answer.put("name", bus.name());
  answer.put("clock_hz", uint64_t{bus.settings().clockHz});
  answer.put("timeout_ms", seconds(bus.settings().timeout) * 1000);
  answer.put("waits", bus.settings().waitBusTime);
  putCounts(counts.all, bus, answer);
  answer.key("unanswered");
  answer.object([&] { putCount(counts.unanswered.total(), bus, answer); });
  std::vector<std::string> labels;
  for (const ChipInfo& chip : board.chips()) {
    if (chip.bus == bus.name()) {
      labels.push_back(chip.label);
    }
  }
  answer.list("chips", labels, [&](const std::string& label) {
    answer.object([&] {
      answer.put("label", label);
      putCounts(board.countsOf(label), bus, answer);
    });
  });
}

}  // namespace

void reportBoard(VirtualBoard& board, Config::JsonLine& answer) {
  answer.put("board", board.name());
  answer.put("seconds", seconds(board.clock().now()));
  answer.list("buses", board.busNames());
  answer.list("chips", board.chips(),
              [&](const ChipInfo& chip) { answer.object([&] { putChip(board, chip, answer); }); });
  answer.list("wires", board.nets(), [&](const NetInfo& net) {
    answer.object([&] {
      answer.put("name", net.name);
      answer.put("level", net.level);
      answer.list("pins", net.pins);
    });
  });
  answer.list("events", board.eventNames());
  reportFaults(board, answer);
}

void reportScenario(const ScenarioPlayer::Progress& progress, Config::JsonLine& answer) {
  answer.key("scenario");
  answer.object([&] {
    answer.put("name", progress.name);
    answer.put("running", progress.running);
    answer.put("steps", uint64_t{progress.steps});
    answer.put("done", uint64_t{progress.done});
    answer.put("failed", uint64_t{progress.failed});
  });
}

void reportFaults(VirtualBoard& board, Config::JsonLine& answer) {
  const Time now = board.clock().now();
  answer.list("faults", board.faults().inForce(), [&](const FaultReport& fault) {
    answer.object([&] { putFault(fault, now, answer); });
  });
}

void reportTime(VirtualBoard& board, Config::JsonLine& answer) {
  answer.put("seconds", seconds(board.clock().now()));
  answer.list("buses", board.busNames(), [&](const std::string& name) {
    answer.object([&] { putBus(board, *board.bus(name), answer); });
  });
}

void reportTransfers(VirtualBoard& board, const std::vector<std::string>& buses, size_t most,
                     Config::JsonLine& answer) {
  answer.list("buses", buses, [&](const std::string& name) {
    const VirtualBus& bus = *board.bus(name);
    answer.object([&] {
      answer.put("name", name);
      answer.list("transfers", bus.lastTransfers(most), [&](const Transfer& transfer) {
        answer.object([&] { putTransfer(transfer, bus, answer); });
      });
    });
  });
}

}  // namespace SmbusService
