// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_xcvr.h"

#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

using SfpGetter = pl_status (*pl_sfp_ops::*)(pl_xcvr*, int*);
using QsfpGetter = pl_status (*pl_qsfp_ops::*)(pl_xcvr*, int*);

// A signal of a cage; null for a type of cage that has no such signal.
struct Signal {
  SfpGetter sfp;
  QsfpGetter qsfp;
  bool fromModule;  // means nothing while the cage is empty
};

constexpr Signal kLoss = {&pl_sfp_ops::get_rx_los, nullptr, true};
constexpr Signal kFault = {&pl_sfp_ops::get_tx_fault, nullptr, true};
constexpr Signal kDisable = {&pl_sfp_ops::get_tx_disable, nullptr, false};
constexpr Signal kReset = {nullptr, &pl_qsfp_ops::get_reset, false};
constexpr Signal kLowPower = {nullptr, &pl_qsfp_ops::get_lp_mode, false};
constexpr Signal kInterrupt = {nullptr, &pl_qsfp_ops::get_interrupt, true};

pl_xcvr* cage(Record record) { return static_cast<pl_xcvr*>(record); }

bool isSfp(const pl_xcvr* xcvr) { return xcvr->ops->type == PL_XCVR_SFP; }

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_xcvr_add)>("pl_xcvr_add")(board.description(entry).c_str());
}

// 1 or 0, or the status of a failure.
pl_status presence(pl_xcvr* xcvr) {
  const auto& parts = xcvr->ops->kind;
  return isSfp(xcvr) ? callSlot(parts.sfp, parts.sfp.size, &pl_sfp_ops::get_presence, xcvr)
                     : callSlot(parts.qsfp, parts.qsfp.size, &pl_qsfp_ops::get_presence, xcvr);
}

pl_status get(pl_xcvr* xcvr, const Signal& signal, int* value) {
  const auto& parts = xcvr->ops->kind;
  return isSfp(xcvr) ? callSlot(parts.sfp, parts.sfp.size, signal.sfp, xcvr, value)
                     : callSlot(parts.qsfp, parts.qsfp.size, signal.qsfp, xcvr, value);
}

bool has(const pl_xcvr* xcvr, const Signal& signal) {
  return isSfp(xcvr) ? signal.sfp != nullptr : signal.qsfp != nullptr;
}

Reading type(Record record, const Entry&) {
  return {PL_STATUS_OK, isSfp(cage(record)) ? "sfp" : "qsfp"};
}

Reading present(Record record, const Entry&) {
  const pl_status answer = presence(cage(record));
  if (answer == 0) {
    return {PL_STATUS_EMPTY, false};
  }
  return answer == 1 ? Reading{PL_STATUS_OK, true} : Reading{answer, {}};
}

template <const Signal& kSignal>
Reading signal(Record record, const Entry&) {
  pl_xcvr* const xcvr = cage(record);
  if (!has(xcvr, kSignal) || (kSignal.fromModule && presence(xcvr) == 0)) {
    return {};
  }
  int value = 0;
  const pl_status status = get(xcvr, kSignal, &value);
  return {status, value != 0};
}

enum ColumnIndex : size_t {
  kTypeColumn,
  kPresentColumn,
  kLossColumn,
  kFaultColumn,
  kDisableColumn,
  kResetColumn,
  kLowPowerColumn,
  kInterruptColumn
};

constexpr Column kColumns[] = {
    {"type", "TYPE", "", 0, type},
    {"present", "PRESENT", "", 0, present},
    {"rx_loss", "LOS", "", 0, signal<kLoss>},
    {"tx_fault", "FAULT", "", 0, signal<kFault>},
    {"tx_disable", "TX OFF", "", 0, signal<kDisable>},
    {"reset", "RESET", "", 0, signal<kReset>},
    {"low_power", "LOW POWER", "", 0, signal<kLowPower>},
    {"interrupt", "INTERRUPT", "", 0, signal<kInterrupt>},
};

// What a cage with a module is said to be; the first that holds counts.
constexpr struct {
  ColumnIndex column;
  Health health;
  const char* word;
} kConditions[] = {
    {kFaultColumn, Health::kBad, "fault"},
    {kDisableColumn, Health::kWarning, "disabled"},
    {kResetColumn, Health::kWarning, "in reset"},
    {kLossColumn, Health::kWarning, "no light"},
    {kInterruptColumn, Health::kWarning, "interrupt"},
    {kLowPowerColumn, Health::kWarning, "low power"},
};

Verdict judge(std::span<const Reading> readings) {
  for (const auto& condition : kConditions) {
    const bool* const holds = std::get_if<bool>(&readings[condition.column].value);
    if (holds != nullptr && *holds) {
      return {condition.health, condition.word};
    }
  }
  return {};
}

}  // namespace

constinit const Kind kXcvrs = {"xcvrs", "xcvrs", "Transceivers", "fault", add, kColumns, judge};

}  // namespace Nimbo
