// SPDX-License-Identifier: Apache-2.0
//
// Transceiver cages, as drivers implement them (pl/pl_xcvr.h says what the operations mean).
#pragma once

#include <cstdint>

#include "pl/pl_xcvr.h"

// A cage's number, as the board's description gives it.
using XcvrId = unsigned int;

namespace Component::LogicalDevice {

class SfpXcvr {
 public:
  // `id` is the number that traces show; the driver chooses it.
  explicit SfpXcvr(uint32_t number) : id(number), record_{0, &ops_, this} {}
  SfpXcvr(const SfpXcvr&) = delete;
  SfpXcvr& operator=(const SfpXcvr&) = delete;
  virtual ~SfpXcvr() = default;

  virtual pl_status getPresence() = 0;
  virtual pl_status getTxFault(int* fault) = 0;
  virtual pl_status getRxLos(int* loss) = 0;
  virtual pl_status getTxDisable(int* disabled) = 0;
  virtual pl_status setTxDisable(int disable) = 0;

  pl_xcvr* record() { return &record_; }

  static pl_status getPresenceCallback(pl_xcvr* xcvr);
  static pl_status getTxFaultCallback(pl_xcvr* xcvr, int* fault);
  static pl_status getRxLosCallback(pl_xcvr* xcvr, int* loss);
  static pl_status getTxDisableCallback(pl_xcvr* xcvr, int* disabled);
  static pl_status setTxDisableCallback(pl_xcvr* xcvr, int disable);
  static const pl_xcvr_ops ops_;

  const uint32_t id;

 private:
  pl_xcvr record_;
};

class QsfpXcvr {
 public:
  explicit QsfpXcvr(uint32_t number) : id(number), record_{0, &ops_, this} {}
  QsfpXcvr(const QsfpXcvr&) = delete;
  QsfpXcvr& operator=(const QsfpXcvr&) = delete;
  virtual ~QsfpXcvr() = default;

  virtual pl_status getPresence() = 0;
  virtual pl_status getModSel(int* selected) = 0;
  virtual pl_status setModSel(int select) = 0;
  virtual pl_status getLpMode(int* low) = 0;
  virtual pl_status setLpMode(int low) = 0;
  virtual pl_status getReset(int* reset) = 0;
  virtual pl_status setReset(int reset) = 0;
  virtual pl_status getInterrupt(int* interrupt) = 0;

  pl_xcvr* record() { return &record_; }

  static pl_status getPresenceCallback(pl_xcvr* xcvr);
  static pl_status getModSelCallback(pl_xcvr* xcvr, int* selected);
  static pl_status setModSelCallback(pl_xcvr* xcvr, int select);
  static pl_status getLpModeCallback(pl_xcvr* xcvr, int* low);
  static pl_status setLpModeCallback(pl_xcvr* xcvr, int low);
  static pl_status getResetCallback(pl_xcvr* xcvr, int* reset);
  static pl_status setResetCallback(pl_xcvr* xcvr, int reset);
  static pl_status getInterruptCallback(pl_xcvr* xcvr, int* interrupt);
  static const pl_xcvr_ops ops_;

  const uint32_t id;

 private:
  pl_xcvr record_;
};

}  // namespace Component::LogicalDevice
