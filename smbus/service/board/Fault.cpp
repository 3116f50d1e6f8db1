// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Fault.hpp"

#include <array>

namespace SmbusService::Board {
namespace {

using enum FaultKind;
using enum FaultOption;

constexpr uint32_t kDay = 86'400'000;    // ms
constexpr uint32_t kSlowByDefault = 20;  // ms; less than the 35 ms that SMBus allows

constexpr std::array kOptions = {
    FaultOptionRow{kNth, "nth", 1, 1'000'000, "strike at every n-th access only"},
    FaultOptionRow{kCount, "count", 1, 1'000'000'000, "end after so many strikes"},
    FaultOptionRow{kDuration, "forMs", 1, kDay, "end after so many milliseconds"},
    FaultOptionRow{kBytes, "bytes", 0, 65'535, "which byte after the address; 0 is the address"},
    FaultOptionRow{kDelay, "ms", 1, kDay, "milliseconds that it takes"},
    FaultOptionRow{kFan, "fan", 1, 4, "number of the fan"},
};

constexpr std::array kKinds = {
    FaultKindRow{kSilent, "silent", true, true, "count forMs",
                 "does not answer, as if it were pulled; a mux passes nothing on and comes back "
                 "with its channels closed"},
    FaultKindRow{kNack, "nack", true, true, "nth count forMs bytes",
                 "does not acknowledge its address, or a byte written after it"},
    FaultKindRow{kStop, "stop", true, true, "nth count forMs bytes",
                 "the transfer is cut short by a STOP after so many bytes"},
    FaultKindRow{kWrongPec, "wrong-pec", true, true, "nth count forMs",
                 "the packet error code is wrong, in either direction"},
    FaultKindRow{kCorrupt, "corrupt", true, true, "nth count forMs",
                 "a bit of each byte read is turned over, chosen by the board's seed"},
    FaultKindRow{kSlow, "slow", true, true, "nth count forMs ms",
                 "SCL is held for a while; longer than the bus's time-out ends the operation"},
    FaultKindRow{kHang, "hang", false, true, "nth count forMs ms",
                 "an operation does not come back for a while, or until the fault ends"},
    FaultKindRow{kSdaStuck, "sda-stuck", true, true, "count forMs",
                 "SDA stays low; a chip's does where its segment is joined to the bus"},
    FaultKindRow{kSclStuck, "scl-stuck", true, true, "count forMs",
                 "SCL stays low; a chip's does where its segment is joined to the bus"},
    FaultKindRow{kFanStall, "fan-stall", true, false, "fan forMs", "a fan stops turning"},
};

template <typename Rows, typename Member>
constexpr bool inOrder(const Rows& rows, Member member) {
  for (size_t i = 0; i < rows.size(); ++i) {
    if (static_cast<size_t>(rows[i].*member) != i) {
      return false;
    }
  }
  return true;
}
static_assert(inOrder(kOptions, &FaultOptionRow::option) &&
              kOptions.size() == static_cast<size_t>(kFan) + 1);
static_assert(inOrder(kKinds, &FaultKindRow::kind) &&
              kKinds.size() == static_cast<size_t>(kFanStall) + 1);

bool takes(const FaultKindRow& kind, std::string_view key) {
  for (std::string_view keys = kind.options; !keys.empty();) {
    const size_t end = std::min(keys.find(' '), keys.size());
    if (keys.substr(0, end) == key) {
      return true;
    }
    keys.remove_prefix(std::min(end + 1, keys.size()));
  }
  return false;
}

// The option's value, or `absent` if it is not there or not for this kind; a key that is not read
// is refused by whoever finishes the settings.
uint32_t read(Settings& settings, const FaultKindRow& kind, FaultOption option, uint32_t absent) {
  const FaultOptionRow& row = kOptions.at(static_cast<size_t>(option));
  return takes(kind, row.key) ? settings.number(row.key, row.least, row.most, absent) : absent;
}

FaultKind readKind(Settings& settings) {
  std::vector<std::string_view> names;
  for (const FaultKindRow& row : kKinds) {
    names.push_back(row.name);
  }
  if (!settings.has("kind")) {
    settings.fail("kind", "add the key \"kind\"");
  }
  return static_cast<FaultKind>(settings.choice("kind", names));
}

}  // namespace

std::span<const FaultOptionRow> faultOptions() { return kOptions; }

std::span<const FaultKindRow> faultKinds() { return kKinds; }

const FaultKindRow& rowOf(FaultKind kind) { return kKinds.at(static_cast<size_t>(kind)); }

FaultOrder readFaultOrder(Settings& settings) {
  FaultOrder order;
  order.kind = readKind(settings);
  order.target = settings.text("target");
  const FaultKindRow& kind = rowOf(order.kind);
  order.nth = read(settings, kind, kNth, 1);
  order.count = read(settings, kind, kCount, 0);
  order.duration = std::chrono::milliseconds(read(settings, kind, kDuration, 0));
  order.bytes = read(settings, kind, kBytes, order.kind == kStop ? 1 : 0);
  const uint32_t delay = read(settings, kind, kDelay, order.kind == kSlow ? kSlowByDefault : 0);
  order.delay = std::chrono::milliseconds(delay);
  order.fan = read(settings, kind, kFan, 1);
  if (order.kind == kHang && order.count > 0 && delay == 0) {
    settings.fail("count", "a hang with \"count\" needs \"ms\", how long each one lasts");
  }
  return order;
}

}  // namespace SmbusService::Board
