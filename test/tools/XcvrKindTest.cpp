// SPDX-License-Identifier: Apache-2.0
//
// How cages are read and judged, on records of the test's own.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "pl/pl_xcvr.h"
#include "tools/Device.hpp"
#include "tools/kinds/Kinds.hpp"

namespace {

using namespace Nimbo;

// What the cage's signals are; a presence beyond 1 is a failure.
struct Signals {
  int present = 1, loss = 0, fault = 0, disabled = 0, reset = 0, low = 0, interrupt = 0;
  pl_status failure = PL_STATUS_OK;  // of every signal but presence
};

Signals& signalsOf(pl_xcvr* xcvr) { return *static_cast<Signals*>(xcvr->object); }

pl_status presence(pl_xcvr* xcvr) { return signalsOf(xcvr).present; }

template <int Signals::*kMember>
pl_status get(pl_xcvr* xcvr, int* value) {
  *value = signalsOf(xcvr).*kMember;
  return signalsOf(xcvr).failure;
}

pl_xcvr_ops sfpOps() {
  pl_xcvr_ops ops{sizeof(pl_xcvr_ops), PL_XCVR_SFP, {}};
  ops.kind.sfp = {sizeof(pl_sfp_ops),      presence, get<&Signals::fault>, get<&Signals::loss>,
                  get<&Signals::disabled>, nullptr};
  return ops;
}

pl_xcvr_ops qsfpOps() {
  pl_xcvr_ops ops{sizeof(pl_xcvr_ops), PL_XCVR_QSFP, {}};
  ops.kind.qsfp.size = sizeof(pl_qsfp_ops);
  ops.kind.qsfp.get_presence = presence;
  ops.kind.qsfp.get_lp_mode = get<&Signals::low>;
  ops.kind.qsfp.get_reset = get<&Signals::reset>;
  ops.kind.qsfp.get_interrupt = get<&Signals::interrupt>;
  return ops;
}

class Cage {
 public:
  Cage(const pl_xcvr_ops& ops, Signals signals) : ops_(ops), signals_(signals) {}

  Observation look() {
    device_ = {&kXcvrs, {"p", "", nullptr, nullptr}, &record_, {}};
    return observe(device_);
  }
  std::string word() { return look().verdict().word; }

  // The columns that read true or false.
  std::map<std::string, bool> flags() {
    const Observation seen = look();
    std::map<std::string, bool> flags;
    for (size_t i = 0; i < kXcvrs.columns.size(); ++i) {
      if (const bool* flag = std::get_if<bool>(&seen.readings[i].value)) {
        flags[kXcvrs.columns[i].key] = *flag;
      }
    }
    return flags;
  }

 private:
  pl_xcvr_ops ops_;
  Signals signals_;
  pl_xcvr record_{0, &ops_, &signals_};
  Device device_{};
};

using Flags = std::map<std::string, bool>;

TEST(XcvrKind, SfpCageHasTheSignalsOfAnSfp) {
  EXPECT_EQ(
      Cage(sfpOps(), {.loss = 1, .disabled = 1}).flags(),
      (Flags{{"present", true}, {"rx_loss", true}, {"tx_fault", false}, {"tx_disable", true}}));
}

TEST(XcvrKind, QsfpCageHasTheSignalsOfAQsfp) {
  EXPECT_EQ(Cage(qsfpOps(), {.low = 1, .interrupt = 1}).flags(),
            (Flags{{"present", true}, {"reset", false}, {"low_power", true}, {"interrupt", true}}));
}

TEST(XcvrKind, EmptyCageShowsWhatTheHostSetAndNothingOfAModule) {
  EXPECT_EQ(Cage(sfpOps(), {.present = 0, .loss = 1, .fault = 1, .disabled = 1}).flags(),
            (Flags{{"present", false}, {"tx_disable", true}}));
  EXPECT_EQ(Cage(qsfpOps(), {.present = 0, .reset = 1, .interrupt = 1}).flags(),
            (Flags{{"present", false}, {"reset", true}, {"low_power", false}}));
}

TEST(XcvrKind, EmptyCageIsNoFailure) {
  const Observation seen = Cage(sfpOps(), {.present = 0, .fault = 1}).look();
  EXPECT_EQ(seen.status(), "EMPTY");
  EXPECT_FALSE(seen.outcome.failed());
}

TEST(XcvrKind, PresenceThatCannotBeReadIsAFailure) {
  EXPECT_EQ(Cage(sfpOps(), {.present = PL_STATUS_REMOTE}).look().status(), "REMOTE");
}

TEST(XcvrKind, SignalThatCannotBeReadIsAFailure) {
  EXPECT_EQ(Cage(qsfpOps(), {.failure = PL_STATUS_FAILED}).look().status(), "FAILED");
}

TEST(XcvrKind, ConditionIsTheGravestSignal) {
  EXPECT_EQ(Cage(sfpOps(), {}).word(), "ok");
  EXPECT_EQ(Cage(sfpOps(), {.loss = 1}).word(), "no light");
  EXPECT_EQ(Cage(sfpOps(), {.loss = 1, .disabled = 1}).word(), "disabled");
  EXPECT_EQ(Cage(sfpOps(), {.loss = 1, .fault = 1, .disabled = 1}).word(), "fault");
  EXPECT_EQ(Cage(qsfpOps(), {.low = 1}).word(), "low power");
  EXPECT_EQ(Cage(qsfpOps(), {.low = 1, .interrupt = 1}).word(), "interrupt");
  EXPECT_EQ(Cage(qsfpOps(), {.reset = 1, .low = 1, .interrupt = 1}).word(), "in reset");
}

TEST(XcvrKind, OnlyAFaultIsBad) {
  EXPECT_EQ(Cage(sfpOps(), {.fault = 1}).look().verdict().health, Health::kBad);
  EXPECT_EQ(Cage(qsfpOps(), {.reset = 1}).look().verdict().health, Health::kWarning);
  EXPECT_EQ(Cage(qsfpOps(), {}).look().verdict().health, Health::kGood);
}

}  // namespace
