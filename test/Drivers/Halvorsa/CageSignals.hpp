// SPDX-License-Identifier: Apache-2.0
//
// Transceiver cages for tests, and a check of every signal against the bits of the chip.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "Components/DeviceBase.hpp"
#include "Components/Xcvr.hpp"
#include "test/support/Host.hpp"

namespace Doubles {

// A cage of a device; the traces of its making are forgotten.
inline std::unique_ptr<Component::LogicalDevice::SfpXcvr> newSfp(Component::DeviceBase& device,
                                                                 unsigned id) {
  std::unique_ptr<Component::LogicalDevice::SfpXcvr> cage(device.newSfpXcvr(id, {}));
  EXPECT_EQ(cage->id, id);
  host().traces.clear();
  return cage;
}
inline std::unique_ptr<Component::LogicalDevice::QsfpXcvr> newQsfp(Component::DeviceBase& device,
                                                                   unsigned id) {
  std::unique_ptr<Component::LogicalDevice::QsfpXcvr> cage(device.newQsfpXcvr(id, {}));
  EXPECT_EQ(cage->id, id);
  host().traces.clear();
  return cage;
}

// A signal besides presence: which of the port's bits it is, and its value while that bit is set.
template <class Xcvr>
struct CageSignal {
  const char* name;
  pl_status (Xcvr::*get)(int*);
  pl_status (Xcvr::*set)(int);  // null: the signal is only read
  unsigned bit;
  int whenSet;
};

// The register that holds a port's bits, with the others it must not look at or change.
struct CageRegister {
  unsigned ones;                       // the register with every bit set
  unsigned lowest;                     // the lowest bit of the port's four
  std::function<void(unsigned)> hold;  // what queries see from now on, and commands start from
  std::function<unsigned()> held;      // what commands have made of it
};

template <class Xcvr>
void checkPresence(Xcvr& cage, const CageRegister& reg, unsigned bit) {
  const unsigned mask = reg.lowest * bit;
  reg.hold(mask);
  EXPECT_EQ(cage.getPresence(), 1);
  reg.hold(reg.ones & ~mask);
  EXPECT_EQ(cage.getPresence(), 0);
}

template <class Xcvr>
void checkQuery(Xcvr& cage, const CageRegister& reg, const CageSignal<Xcvr>& signal) {
  const unsigned mask = reg.lowest * signal.bit;
  int value = 7;
  reg.hold(mask);
  EXPECT_EQ((cage.*signal.get)(&value), 0);
  EXPECT_EQ(value, signal.whenSet);
  reg.hold(reg.ones & ~mask);
  EXPECT_EQ((cage.*signal.get)(&value), 0);
  EXPECT_EQ(value, 1 - signal.whenSet);
}

template <class Xcvr>
void checkCommand(Xcvr& cage, const CageRegister& reg, const CageSignal<Xcvr>& signal) {
  const unsigned mask = reg.lowest * signal.bit;
  reg.hold(0);
  EXPECT_EQ((cage.*signal.set)(signal.whenSet), 0);
  EXPECT_EQ(reg.held(), mask);
  reg.hold(reg.ones);
  EXPECT_EQ((cage.*signal.set)(1 - signal.whenSet), 0);
  EXPECT_EQ(reg.held(), reg.ones & ~mask);
}

template <class Xcvr, size_t kSignals>
void checkCage(Xcvr& cage, const CageRegister& reg, unsigned presentBit,
               const CageSignal<Xcvr> (&signals)[kSignals]) {
  SCOPED_TRACE(testing::Message() << "port " << cage.id);
  checkPresence(cage, reg, presentBit);
  for (const auto& signal : signals) {
    SCOPED_TRACE(signal.name);
    checkQuery(cage, reg, signal);
    if (signal.set != nullptr) {
      checkCommand(cage, reg, signal);
    }
  }
}

}  // namespace Doubles
