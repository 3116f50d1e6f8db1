// SPDX-License-Identifier: Apache-2.0
#include "tools/Device.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

#include "pl/pl_fan.h"
#include "pl/pl_host.h"

namespace {

using namespace Nimbo;

Reading works(Record, const Entry&) { return {PL_STATUS_OK, 7.0}; }
Reading stalls(Record, const Entry&) { return {PL_STATUS_FAULT, 9.0}; }
Reading isEmpty(Record, const Entry&) { return {PL_STATUS_EMPTY, {}}; }
Reading isEmptyAndSaysSo(Record, const Entry&) {
  pl_trace(0, "nobody is here");
  return {PL_STATUS_EMPTY, false};
}
Reading noAnswer(Record, const Entry&) {
  pl_trace(0, "bus hangs");
  return {PL_STATUS_REMOTE, {}};
}
Reading throws(Record, const Entry&) { throw std::runtime_error("Not implemented x"); }

Observation look(Reading (*first)(Record, const Entry&), Reading (*second)(Record, const Entry&)) {
  static Column columns[2];
  columns[0] = {"a", "A", "", 0, first};
  columns[1] = {"b", "B", "", 0, second};
  static const Kind kind = {"fans", "fans", "Fans", "stalled", nullptr, columns};
  static int record = 0;
  static Device device;
  device = {&kind, {"fan1", "", nullptr, nullptr}, &record, {}};
  return observe(device);
}

TEST(Device, GoodReadingsAreOk) {
  const Observation seen = look(works, works);
  EXPECT_EQ(seen.status(), "OK");
  EXPECT_EQ(seen.verdict().word, "ok");
  EXPECT_EQ(std::get<double>(seen.readings[1].value), 7.0);
  EXPECT_FALSE(seen.outcome.failed());
}

TEST(Device, FaultIsInTheKindsWordsAndItsValueIsDropped) {
  const Observation seen = look(stalls, works);
  EXPECT_EQ(seen.status(), "FAULT");
  EXPECT_EQ(seen.verdict().word, "stalled");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(seen.readings[0].value));
  EXPECT_TRUE(seen.outcome.failed());
}

TEST(Device, FailureOfOneColumnLeavesTheOthers) {
  const Observation seen = look(noAnswer, works);
  EXPECT_EQ(seen.status(), "REMOTE");
  EXPECT_EQ(seen.outcome.reason, "bus hangs");
  EXPECT_EQ(std::get<double>(seen.readings[1].value), 7.0);
}

TEST(Device, FirstFailureCounts) {
  EXPECT_EQ(look(stalls, noAnswer).status(), "FAULT");
  EXPECT_EQ(look(noAnswer, stalls).status(), "REMOTE");
}

TEST(Device, ExceptionOfTheLibraryIsAReason) {
  const Observation seen = look(throws, works);
  EXPECT_EQ(seen.status(), "ERROR");
  EXPECT_EQ(seen.outcome.reason, "Not implemented x");
  EXPECT_TRUE(seen.outcome.failed());
}

TEST(Device, EmptySlotIsNoFailure) {
  const Observation seen = look(isEmpty, works);
  EXPECT_EQ(seen.status(), "EMPTY");
  EXPECT_FALSE(seen.outcome.failed());
  EXPECT_EQ(seen.verdict().health, Health::kGood);
}

TEST(Device, ValueOfAnEmptySlotIsKept) {
  const Observation seen = look(isEmptyAndSaysSo, works);
  EXPECT_EQ(seen.status(), "EMPTY");
  EXPECT_EQ(std::get<bool>(seen.readings[0].value), false);
}

TEST(Device, WhatIsTracedOfAnEmptySlotIsNoReason) {
  EXPECT_EQ(look(isEmptyAndSaysSo, works).outcome.reason, "");
}

TEST(Device, FailureCountsMoreThanAnEmptySlot) {
  EXPECT_EQ(look(isEmpty, noAnswer).status(), "REMOTE");
  EXPECT_EQ(look(noAnswer, isEmpty).status(), "REMOTE");
}

pl_status setTo(pl_fan*, int) { return PL_STATUS_OK; }

TEST(Slots, NullSlotIsUnsupported) {
  const pl_fan_ops ops = {sizeof ops, nullptr, nullptr, setTo};
  pl_fan fan = {0, &ops, nullptr};
  int rpm = 0;
  EXPECT_EQ(call(&fan, &pl_fan_ops::get_rpm, &rpm), PL_STATUS_UNSUPPORTED);
  EXPECT_EQ(call(&fan, &pl_fan_ops::set_rpm, 5), PL_STATUS_OK);
}

TEST(Slots, SlotBeyondTheRecordsSizeIsUnsupported) {
  const pl_fan_ops ops = {offsetof(pl_fan_ops, set_rpm), nullptr, nullptr, setTo};
  pl_fan fan = {0, &ops, nullptr};
  EXPECT_EQ(call(&fan, &pl_fan_ops::set_rpm, 5), PL_STATUS_UNSUPPORTED);
}

}  // namespace
