// SPDX-License-Identifier: Apache-2.0
#include "Components/Xcvr.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::QsfpXcvr;
using Component::LogicalDevice::SfpXcvr;
using Doubles::describeBare;
using Doubles::host;
using Doubles::Trace;
using testing::ElementsAre;

constexpr const char* kUnit = "Components/Xcvr";

// Each operation gives a status of its own, getters also as their value; setters keep theirs.
class StubSfp : public SfpXcvr {
 public:
  using SfpXcvr::SfpXcvr;
  pl_status getPresence() override { return 10; }
  pl_status getTxFault(int* fault) override { return *fault = 11; }
  pl_status getRxLos(int* loss) override { return *loss = 12; }
  pl_status getTxDisable(int* disabled) override { return *disabled = 13; }
  pl_status setTxDisable(int disable) override {
    asked = disable;
    return 14;
  }
  int asked = -1;
};

class StubQsfp : public QsfpXcvr {
 public:
  using QsfpXcvr::QsfpXcvr;
  pl_status getPresence() override { return 10; }
  pl_status getModSel(int* selected) override { return *selected = 11; }
  pl_status setModSel(int select) override { return ask(select, 12); }
  pl_status getLpMode(int* low) override { return *low = 13; }
  pl_status setLpMode(int low) override { return ask(low, 14); }
  pl_status getReset(int* reset) override { return *reset = 15; }
  pl_status setReset(int reset) override { return ask(reset, 16); }
  pl_status getInterrupt(int* interrupt) override { return *interrupt = 17; }
  int asked = -1;

 private:
  pl_status ask(int value, pl_status status) {
    asked = value;
    return status;
  }
};

struct Getter {
  const char* name;
  pl_status (*call)(pl_xcvr*, int*);
  pl_status status;
};

struct Setter {
  const char* name;
  pl_status (*call)(pl_xcvr*, int);
  pl_status status;
};

void expectGetters(pl_xcvr* record, std::initializer_list<Getter> getters) {
  for (const auto& [name, call, status] : getters) {
    host().traces.clear();
    int value = 0;
    EXPECT_EQ(call(record, &value), status) << name;
    EXPECT_EQ(value, status) << name;
    EXPECT_THAT(host().traces, ElementsAre(Trace{4, std::string(name) + "(42)"}));
  }
}

TEST(SfpOps, StandInOrder) {
  const pl_xcvr_ops& ops = SfpXcvr::ops_;
  EXPECT_EQ(ops.size, 80u);
  EXPECT_EQ(ops.type, 0u);
  EXPECT_EQ(ops.kind.sfp.size, 48u);
  EXPECT_EQ(ops.kind.sfp.get_presence, SfpXcvr::getPresenceCallback);
  EXPECT_EQ(ops.kind.sfp.get_tx_fault, SfpXcvr::getTxFaultCallback);
  EXPECT_EQ(ops.kind.sfp.get_rx_los, SfpXcvr::getRxLosCallback);
  EXPECT_EQ(ops.kind.sfp.get_tx_disable, SfpXcvr::getTxDisableCallback);
  EXPECT_EQ(ops.kind.sfp.set_tx_disable, SfpXcvr::setTxDisableCallback);
}

TEST(SfpOps, EndInZeros) {
  const auto* words = reinterpret_cast<const uint64_t*>(&SfpXcvr::ops_);
  EXPECT_THAT(std::vector<uint64_t>(words + 7, words + 10), testing::Each(0u));
  EXPECT_NE(words[6], 0u);
}

TEST(QsfpOps, StandInOrder) {
  const pl_xcvr_ops& ops = QsfpXcvr::ops_;
  EXPECT_EQ(ops.size, 80u);
  EXPECT_EQ(ops.type, 1u);
  EXPECT_EQ(ops.kind.qsfp.size, 72u);
  EXPECT_EQ(ops.kind.qsfp.get_presence, QsfpXcvr::getPresenceCallback);
  EXPECT_EQ(ops.kind.qsfp.get_mod_sel, QsfpXcvr::getModSelCallback);
  EXPECT_EQ(ops.kind.qsfp.set_mod_sel, QsfpXcvr::setModSelCallback);
  EXPECT_EQ(ops.kind.qsfp.get_lp_mode, QsfpXcvr::getLpModeCallback);
  EXPECT_EQ(ops.kind.qsfp.set_lp_mode, QsfpXcvr::setLpModeCallback);
  EXPECT_EQ(ops.kind.qsfp.get_reset, QsfpXcvr::getResetCallback);
  EXPECT_EQ(ops.kind.qsfp.set_reset, QsfpXcvr::setResetCallback);
  EXPECT_EQ(ops.kind.qsfp.get_interrupt, QsfpXcvr::getInterruptCallback);
}

TEST(SfpCallback, ForwardsAndTracesTheId) {
  StubSfp sfp(42);
  pl_xcvr* record = sfp.record();
  EXPECT_EQ(record->ops, &SfpXcvr::ops_);
  const pl_sfp_ops& ops = record->ops->kind.sfp;
  EXPECT_EQ(ops.get_presence(record), 10);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "getPresenceCallback(42)"}));
  expectGetters(record, {{"getTxFaultCallback", ops.get_tx_fault, 11},
                         {"getRxLosCallback", ops.get_rx_los, 12},
                         {"getTxDisableCallback", ops.get_tx_disable, 13}});
  host().traces.clear();
  EXPECT_EQ(ops.set_tx_disable(record, 1), 14);
  EXPECT_EQ(sfp.asked, 1);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "setTxDisableCallback(42, 1)"}));
}

TEST(QsfpCallback, ForwardsAndTracesTheId) {
  StubQsfp qsfp(42);
  pl_xcvr* record = qsfp.record();
  EXPECT_EQ(record->ops, &QsfpXcvr::ops_);
  const pl_qsfp_ops& ops = record->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(record), 10);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "getPresenceCallback(42)"}));
  expectGetters(record, {{"getModSelCallback", ops.get_mod_sel, 11},
                         {"getLpModeCallback", ops.get_lp_mode, 13},
                         {"getResetCallback", ops.get_reset, 15},
                         {"getInterruptCallback", ops.get_interrupt, 17}});
  int value = 100;
  for (const auto& [name, call, status] : {Setter{"setModSelCallback", ops.set_mod_sel, 12},
                                           {"setLpModeCallback", ops.set_lp_mode, 14},
                                           {"setResetCallback", ops.set_reset, 16}}) {
    host().traces.clear();
    EXPECT_EQ(call(record, ++value), status) << name;
    EXPECT_EQ(qsfp.asked, value) << name;
    EXPECT_THAT(host().traces,
                ElementsAre(Trace{4, std::string(name) + "(42, " + std::to_string(value) + ")"}));
  }
}

// Adding cages.

class XcvrDevice : public Component::HardwareDevice {
 public:
  SfpXcvr* newSfpXcvr(unsigned id, const DriverArgs&) override {
    sfp = hasCages ? std::make_unique<StubSfp>(id) : nullptr;
    return sfp.get();
  }
  QsfpXcvr* newQsfpXcvr(unsigned id, const DriverArgs&) override {
    qsfp = hasCages ? std::make_unique<StubQsfp>(id) : nullptr;
    return qsfp.get();
  }
  static inline bool hasCages = true;
  std::unique_ptr<StubSfp> sfp;
  std::unique_ptr<StubQsfp> qsfp;
};

class XcvrAdder : public testing::Test {
 protected:
  XcvrAdder() {
    Drivers::drivers["Xcvr"] = [](const auto&, auto*) { return new XcvrDevice; };
    Drivers::drivers["None"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
  static std::string port(const std::string& type, const std::string& id = "42") {
    return describeBare(7, "Xcvr", R"({"id":)" + id + R"(,"type":")" + type + R"("})");
  }
  static XcvrDevice& device() {
    return dynamic_cast<XcvrDevice&>(*Component::DeviceBase::devices.at(7));
  }
};

TEST_F(XcvrAdder, MakesSfpCages) {
  for (const char* type : {"sfp", "sfp+"}) {
    const pl_xcvr* record = pl_xcvr_add(port(type).c_str());
    ASSERT_NE(record, nullptr) << type;
    EXPECT_EQ(record, device().sfp->record()) << type;
    EXPECT_EQ(device().sfp->id, 42u) << type;
  }
}

TEST_F(XcvrAdder, MakesQsfpCages) {
  for (const char* type : {"qsfp", "qsfp+"}) {
    const pl_xcvr* record = pl_xcvr_add(port(type).c_str());
    ASSERT_NE(record, nullptr) << type;
    EXPECT_EQ(record, device().qsfp->record()) << type;
    EXPECT_EQ(device().qsfp->id, 42u) << type;
  }
}

TEST_F(XcvrAdder, TracesADeviceThatCannotBeMade) {
  EXPECT_EQ(pl_xcvr_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "DeviceBase::create() failed"}));
}

TEST_F(XcvrAdder, TracesACageThatCannotBeMade) {
  XcvrDevice::hasCages = false;
  EXPECT_EQ(pl_xcvr_add(port("sfp").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "newSfpXcvr() failed"}));
  EXPECT_EQ(pl_xcvr_add(port("qsfp+").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "newQsfpXcvr() failed"}));
}

TEST_F(XcvrAdder, StopsOnAnotherType) {
  for (const char* type : {"QSFP", "qsfp28", ""}) {
    EXPECT_CHECK_AFTER(pl_xcvr_add(port(type).c_str()),
                       (Trace{0, std::string("Xcvr type ") + type + " not supported"}), kUnit,
                       "false && \"Xcvr type not supported\"");
  }
}

TEST_F(XcvrAdder, StopsWithoutAnId) {
  EXPECT_CHECK_AFTER(pl_xcvr_add(describeBare(7, "Xcvr", R"({"type":"sfp"})").c_str()),
                     (Trace{0, "No id argument given for Xcvr"}), kUnit,
                     "it != args.driverArgs.end()");
}

TEST_F(XcvrAdder, StopsWithoutAType) {
  EXPECT_CHECK_AFTER(pl_xcvr_add(describeBare(7, "Xcvr", R"({"id":42})").c_str()),
                     (Trace{0, "No type argument given for Xcvr"}), kUnit,
                     "it != args.driverArgs.end()");
}

TEST_F(XcvrAdder, ThrowsOnAnIdThatIsNoNumber) {
  for (const char* id : {R"("x")", R"("")"}) {
    try {
      pl_xcvr_add(port("sfp", id).c_str());
      ADD_FAILURE() << id << " is taken";
    } catch (const std::invalid_argument& exception) {
      EXPECT_STREQ(exception.what(), "stoi");
    }
  }
  try {
    pl_xcvr_add(port("sfp", "4294967295").c_str());
    ADD_FAILURE() << "4294967295 is taken";
  } catch (const std::out_of_range& exception) {
    EXPECT_STREQ(exception.what(), "stoi");
  }
}

TEST_F(XcvrAdder, ThrowsForADeviceWithoutCages) {
  const std::string text = describeBare(8, "None", R"({"id":1,"type":"sfp"})");
  EXPECT_THROW(pl_xcvr_add(text.c_str()), NotImplementedException);
}

}  // namespace
