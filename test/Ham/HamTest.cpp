// SPDX-License-Identifier: Apache-2.0
#include "Ham/Ham.hpp"

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <memory>

#include "Ham/SimHam.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Doubles::FakeHam;
using Doubles::host;
using Doubles::printed;
using Doubles::ScriptedHam;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

// What every HAM must supply, and nothing more.
class BareHam final : public Ham::Ham {
 public:
  void prepare() override {}
  int execute() override { return 0; }
};

// The base's behaviour.

struct Missing {
  const char* name;
  std::function<void(Ham::Ham&)> call;
};

const Missing kMissing[] = {
    {"addRecvByte", [](Ham::Ham& ham) { ham.addRecvByte(); }},
    {"addRead8", [](Ham::Ham& ham) { ham.addRead8(1); }},
    {"addRead16", [](Ham::Ham& ham) { ham.addRead16(1); }},
    {"addRead32", [](Ham::Ham& ham) { ham.addRead32(1); }},
    {"addRead", [](Ham::Ham& ham) { ham.addRead(1, 2, false); }},
    {"addReadBlock", [](Ham::Ham& ham) { ham.addReadBlock(1); }},
    {"addSendByte", [](Ham::Ham& ham) { ham.addSendByte(1, false); }},
    {"addWrite8", [](Ham::Ham& ham) { ham.addWrite8(1, 2, false); }},
    {"addWrite16", [](Ham::Ham& ham) { ham.addWrite16(1, 2, false); }},
    {"addWrite32", [](Ham::Ham& ham) { ham.addWrite32(1, 2, false); }},
    {"addWrite", [](Ham::Ham& ham) { ham.addWrite(1, "", 0, false); }},
    {"addWriteBlock", [](Ham::Ham& ham) { ham.addWriteBlock(1, "", 0, false); }},
    {"addProcessCall", [](Ham::Ham& ham) { ham.addProcessCall(1, 2); }},
    {"get8", [](Ham::Ham& ham) { ham.get8(0); }},
    {"get16", [](Ham::Ham& ham) { ham.get16(0); }},
    {"get32", [](Ham::Ham& ham) { ham.get32(0); }},
    {"getBlock", [](Ham::Ham& ham) { ham.getBlock(0, 1); }},
};

TEST(Ham, ThrowsTheNameOfAnOperationThatItLacks) {
  BareHam ham;
  for (const Missing& missing : kMissing) {
    try {
      missing.call(ham);
      ADD_FAILURE() << missing.name << " does not throw";
    } catch (const NotImplementedException& exception) {
      EXPECT_EQ(exception.what(), std::string("Not implemented ") + missing.name);
    }
  }
}

TEST(Ham, TracesThatItTakesNoNamesAndValues) {
  BareHam ham;
  Utils::ExpectedVals values;
  ham.init();
  ham.setDriverName("X", "y");
  ham.setExpected(&values);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "virtual Ham::setDriverName() invoked!!!"},
                                         Trace{0, "virtual Ham::setExpected() invoked!!!"}));
}

TEST(Ham, KeepsTheRetryCountForLaterBatches) {
  FakeHam ham;
  EXPECT_FALSE(ham.retryCountSet);
  EXPECT_EQ(ham.retryCount, 0u);
  ham.retryCountIs(0);
  EXPECT_TRUE(ham.retryCountSet);
  ham.retryCountIs(7);
  ham.write8(1, 2, false);
  EXPECT_EQ(ham.retryCount, 7u);
  EXPECT_TRUE(ham.retryCountSet);
}

TEST(Ham, MarksNoResponseWithAllBits) { EXPECT_EQ(Ham::Ham::INVALID_RESPONSE_ID, 0xFFFFFFFFu); }

// The wrappers.

TEST(HamWrapper, EachRunsABatchOfOne) {
  ScriptedHam ham;
  ham.expect({Op::recvByte().gives(0x11)});
  ham.expect({Op::read8(0x20).gives(0x22)});
  ham.expect({Op::read16(0x30).gives(0x3344)});
  ham.expect({Op::read(0x40, 3, true).gives("abc")});
  ham.expect({Op::readBlock(0x50).gives("block")});
  ham.expect({Op::sendByte(0x66, true)});
  ham.expect({Op::write8(0x70, 0x77, true)});
  ham.expect({Op::write16(0x80, 0x8899, false)});
  ham.expect({Op::write(0x90, "de", true)});
  ham.expect({Op::writeBlock(0xA0, "fgh", false)});
  ham.expect({Op::processCall(0xB0, 0xBBCC).gives(0xDDEE)});

  uint8_t byte;
  uint16_t word;
  std::string block;
  EXPECT_EQ(ham.recvByte(&byte), 0);
  EXPECT_EQ(byte, 0x11);
  EXPECT_EQ(ham.read8(0x20, &byte), 0);
  EXPECT_EQ(byte, 0x22);
  EXPECT_EQ(ham.read16(0x30, &word), 0);
  EXPECT_EQ(word, 0x3344);
  EXPECT_EQ(ham.read(0x40, 3, &block, true), 0);
  EXPECT_EQ(block, "abc");
  EXPECT_EQ(ham.readBlock(0x50, &block), 0);
  EXPECT_EQ(block, "block");
  EXPECT_EQ(ham.sendByte(0x66, true), 0);
  EXPECT_EQ(ham.write8(0x70, 0x77, true), 0);
  EXPECT_EQ(ham.write16(0x80, 0x8899, false), 0);
  EXPECT_EQ(ham.write(0x90, "de", 2, true), 0);
  EXPECT_EQ(ham.writeBlock(0xA0, "fgh", 3, false), 0);
  EXPECT_EQ(ham.processCall(0xB0, 0xBBCC, &word), 0);
  EXPECT_EQ(word, 0xDDEE);
}

TEST(HamWrapper, GivesTheStatusAndLeavesTheOutputOnFailure) {
  FakeHam ham;  // holds nothing, so every read fails
  uint8_t byte = 1;
  uint16_t word = 2;
  std::string block = "before";
  EXPECT_EQ(ham.read8(0x20, &byte), 4);
  EXPECT_EQ(ham.read16(0x20, &word), 4);
  EXPECT_EQ(ham.read(0x20, 3, &block, false), 4);
  EXPECT_EQ(ham.readBlock(0x20, &block), 4);
  EXPECT_EQ(ham.processCall(0x20, 1, &word), 4);
  EXPECT_EQ(byte, 1);
  EXPECT_EQ(word, 2);
  EXPECT_EQ(block, "before");
}

TEST(HamWrapper, GivesTheStatusOfAFailedWrite) {
  ScriptedHam ham;
  ham.expect({Op::sendByte(1)}).fails(6);
  ham.expect({Op::write8(1, 2)}).fails(4);
  ham.expect({Op::write16(1, 2)}).fails(5);
  ham.expect({Op::write(1, "a")}).fails(7);
  ham.expect({Op::writeBlock(1, "a")}).fails(8);
  EXPECT_EQ(ham.sendByte(1, false), 6);
  EXPECT_EQ(ham.write8(1, 2, false), 4);
  EXPECT_EQ(ham.write16(1, 2, false), 5);
  EXPECT_EQ(ham.write(1, "a", 1, false), 7);
  EXPECT_EQ(ham.writeBlock(1, "a", 1, false), 8);
}

TEST(HamWrapper, AsksForTheLengthOfAReadAndForNoneOfABlock) {
  FakeHam ham;
  ham.setBlock(0x20, "block");
  std::string block;
  ham.read(0x20, 3, &block, false);
  ham.readBlock(0x20, &block);
  EXPECT_THAT(ham.blockLengths, ElementsAre(3u, 0u));
}

TEST(HamWrapper, Of32BitsThrowsBeforeAnythingIsSent) {
  FakeHam ham;
  uint32_t value = 1;
  try {
    ham.read32(0x20, &value);
    ADD_FAILURE() << "read32 does not throw";
  } catch (const NotImplementedException& exception) {
    EXPECT_STREQ(exception.what(), "Not implemented addRead32");
  }
  EXPECT_THROW(ham.write32(0x20, 1, false), NotImplementedException);
  EXPECT_THAT(ham.batches(), IsEmpty());
  EXPECT_EQ(value, 1u);
}

// A HAM with 32-bit accesses, as a later one may be.
class WideHam final : public Ham::Ham {
 public:
  void prepare() override { log += "prepare "; }
  int execute() override {
    log += "execute ";
    return status;
  }
  ResponseId addRead32(uint32_t reg) override {
    log += printed("read32(%u) ", reg);
    return 3;
  }
  ResponseId addWrite32(uint32_t reg, uint32_t value, bool flag) override {
    log += printed("write32(%u, %x, %d) ", reg, value, flag);
    return 0;
  }
  uint32_t get32(ResponseId idx) override { return idx * 1000; }

  std::string log;
  int status = 0;
};

TEST(HamWrapper, Of32BitsRunsABatchOfOne) {
  WideHam ham;
  uint32_t value = 0;
  EXPECT_EQ(ham.read32(9, &value), 0);
  EXPECT_EQ(value, 3000u);
  EXPECT_EQ(ham.write32(8, 0xABCDEF01, true), 0);
  EXPECT_EQ(ham.log, "prepare read32(9) execute prepare write32(8, abcdef01, 1) execute ");
  ham.status = 6;
  EXPECT_EQ(ham.read32(9, &value), 6);
  EXPECT_EQ(value, 3000u);
}

// Making HAMs by type.

class CreateHam : public testing::Test {
 protected:
  void SetUp() override {
    ::unsetenv("SIMULATION_VMID");
    Ham::hams["Fake"] = [this](const Topology::Topology& topology,
                               const Drivers::DriverArgs& given) {
      gotTopology = &topology;
      gotArgs = &given;
      return &fake;
    };
    Ham::hams["Broken"] = [](const auto&, const auto&) { return nullptr; };
  }
  static void load(const std::string& ham) {
    const std::string text =
        Doubles::topologyOf(ham, R"({"did":5},{"did":6,"components":[{"uid":60}]})");
    ASSERT_EQ(Topology::loadTopology(text.c_str()), 0);
    host().traces.clear();
  }

  FakeHam fake;
  Drivers::DriverArgs args;
  const Topology::Topology* gotTopology = nullptr;
  const Drivers::DriverArgs* gotArgs = nullptr;
};

TEST_F(CreateHam, CallsTheFactoryOfTheTypeAndInitialises) {
  const Topology::Topology topology;
  EXPECT_EQ(Ham::Ham::create("Fake", topology, args), &fake);
  EXPECT_EQ(gotTopology, &topology);
  EXPECT_EQ(gotArgs, &args);
  EXPECT_EQ(fake.inits, 1);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{3, printed("looking up for Fake in %p with %p",
                                   static_cast<const void*>(&topology), static_cast<void*>(&args))},
                  Trace{3, "calling Fake factory function"}, Trace{3, "ham initialisation"}));
}

TEST_F(CreateHam, TracesAnUnknownType) {
  EXPECT_EQ(Ham::Ham::create("fake", Topology::Topology(), args), nullptr);
  EXPECT_THAT(host().texts(0), ElementsAre("Couldn't find HAM fake"));
  EXPECT_EQ(host().texts(3).size(), 1u);
}

TEST_F(CreateHam, TracesAnUnknownTypeOfAnEmptyRegistry) {
  Ham::hams.clear();
  EXPECT_EQ(Ham::Ham::create("SimHam", Topology::Topology(), args), nullptr);
  EXPECT_TRUE(host().traced(0, "Couldn't find HAM SimHam"));
}

TEST_F(CreateHam, TracesAFactoryThatGivesNone) {
  EXPECT_EQ(Ham::Ham::create("Broken", Topology::Topology(), args), nullptr);
  EXPECT_THAT(host().texts(0),
              ElementsAre("Factory function returned, couldn't create HAM Broken"));
}

TEST_F(CreateHam, TakesTheTypeThatTheControllerNames) {
  load("Fake");
  args.did = 5;
  EXPECT_EQ(Ham::createHam(args), &fake);
  EXPECT_EQ(gotTopology, Topology::_topology);
  EXPECT_EQ(gotArgs, &args);
  EXPECT_THAT(host().texts(0),
              ElementsAre("looking for component 4294967295 of device 5 in topology",
                          "creating Fake HAM using topology information"));
}

TEST_F(CreateHam, LooksForTheComponentWhenOneIsNamed) {
  load("Fake");
  args.did = 99;
  args.uid = 60;
  EXPECT_EQ(Ham::createHam(args), &fake);
}

TEST_F(CreateHam, GivesNullForADeviceThatTheTopologyLacks) {
  load("Fake");
  args.did = 99;
  EXPECT_EQ(Ham::createHam(args), nullptr);
  EXPECT_THAT(host().texts(0),
              ElementsAre("looking for component 4294967295 of device 99 in topology",
                          "could not find component uid -1 in topology"));
}

TEST_F(CreateHam, GivesNullForAComponentThatTheTopologyLacksEvenInSimulation) {
  ::setenv("SIMULATION_VMID", "1", 1);
  load("Fake");
  args.did = 5;
  args.uid = 61;
  EXPECT_EQ(Ham::createHam(args), nullptr);
  EXPECT_TRUE(host().traced(0, "could not find component uid 61 in topology"));
}

TEST_F(CreateHam, TracesThatNoneCouldBeMade) {
  load("Broken");
  args.did = 5;
  EXPECT_EQ(Ham::createHam(args), nullptr);
  EXPECT_EQ(host().texts(0).back(), "failed to create HAM");
}

TEST_F(CreateHam, TakesTheSimulationWheneverThatIsOn) {
  ::setenv("SIMULATION_VMID", "", 1);
  load("NoSuchHam");
  args.did = 5;
  const std::unique_ptr<Ham::SimHam> made(dynamic_cast<Ham::SimHam*>(Ham::createHam(args)));
  EXPECT_NE(made, nullptr);
  EXPECT_TRUE(host().traced(0, "creating SimHam HAM using topology information"));
}

TEST_F(CreateHam, StopsWithoutATopology) {
  EXPECT_CHECK(Ham::createHam(args), "Ham/Ham", "topology");
  EXPECT_DEATH(Ham::createHam(args), "Ham/Ham\\.cpp:123: ");
}

}  // namespace
