// SPDX-License-Identifier: Apache-2.0
//
// Transceiver cages whose signals are single bits of a chip: what the CPLDs and the expanders of
// the front panel have in common. A chip offers the bits of its ports, and a table says which
// signal is which bit.
#pragma once

#include <cstdint>

#include "Components/Xcvr.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

// Where a port's bits stand: bits `base` to `base` + 3 of a register or bank.
struct XcvrBits {
  uint8_t reg;
  uint8_t base;
};

// The chip behind a cage.
class XcvrChip {
 public:
  // One of a port's bits, by its offset from the base. Outputs are untouched on failure.
  virtual pl_status getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) = 0;
  virtual pl_status writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) = 0;

 protected:
  ~XcvrChip() = default;
};

enum class Polarity : uint8_t { kActiveHigh, kActiveLow };

// One signal: the operations' names in traces, and its bit.
struct XcvrSignal {
  const char* getter;
  const char* setter;
  uint8_t offset;
  Polarity polarity;
};

struct SfpSignals {
  XcvrSignal present;
  XcvrSignal txFault;
  XcvrSignal rxLos;
  XcvrSignal txDisable;
};

struct QsfpSignals {
  XcvrSignal present;
  XcvrSignal lpMode;
  XcvrSignal reset;
  XcvrSignal interrupt;
  const char* modSelGetter;  // no cage has the line: both only trace, and succeed
  const char* modSelSetter;
};

// A port of a chip (borrowed), with the index that its traces show.
class XcvrPort {
 public:
  XcvrPort(XcvrChip* chip, unsigned index, const XcvrBits& bits)
      : chip_(chip), index_(index), bits_(bits) {}

  void trace(const char* operation) const;
  pl_status get(const XcvrSignal& signal, int* value) const;
  pl_status set(const XcvrSignal& signal, int value) const;
  // A failed query's status, or the signal itself.
  pl_status presence(const XcvrSignal& signal) const;

 private:
  XcvrChip* chip_;
  unsigned index_;
  XcvrBits bits_;
};

inline void XcvrPort::trace(const char* operation) const {
  TRACE(5, "%s(): id=%hhu", operation, static_cast<unsigned char>(index_));
}

inline pl_status XcvrPort::get(const XcvrSignal& signal, int* value) const {
  trace(signal.getter);
  int bit;
  if (const pl_status status = chip_->getRegisterBit(bits_, signal.offset, &bit)) {
    return status;
  }
  const bool level = bit != 0;
  *value = level == (signal.polarity == Polarity::kActiveHigh) ? 1 : 0;
  return PL_STATUS_OK;
}

class BitSfpXcvr : public Component::LogicalDevice::SfpXcvr {
 public:
  BitSfpXcvr(unsigned number, const XcvrPort& port, const SfpSignals& signals)
      : SfpXcvr(number), port_(port), signals_(signals) {}

  pl_status getPresence() override { return port_.presence(signals_.present); }
  pl_status getTxFault(int* fault) override { return port_.get(signals_.txFault, fault); }
  pl_status getRxLos(int* loss) override { return port_.get(signals_.rxLos, loss); }
  pl_status getTxDisable(int* disabled) override { return port_.get(signals_.txDisable, disabled); }
  pl_status setTxDisable(int disable) override { return port_.set(signals_.txDisable, disable); }

 private:
  XcvrPort port_;
  const SfpSignals& signals_;
};

class BitQsfpXcvr : public Component::LogicalDevice::QsfpXcvr {
 public:
  BitQsfpXcvr(unsigned number, const XcvrPort& port, const QsfpSignals& signals)
      : QsfpXcvr(number), port_(port), signals_(signals) {}

  pl_status getPresence() override { return port_.presence(signals_.present); }
  pl_status getModSel(int*) override;
  pl_status setModSel(int) override;
  pl_status getLpMode(int* low) override { return port_.get(signals_.lpMode, low); }
  pl_status setLpMode(int low) override { return port_.set(signals_.lpMode, low); }
  pl_status getReset(int* reset) override { return port_.get(signals_.reset, reset); }
  pl_status setReset(int reset) override { return port_.set(signals_.reset, reset); }
  pl_status getInterrupt(int* value) override { return port_.get(signals_.interrupt, value); }

 private:
  XcvrPort port_;
  const QsfpSignals& signals_;
};

}  // namespace Drivers
