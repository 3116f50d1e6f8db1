// SPDX-License-Identifier: Apache-2.0
#include "Drivers/PsuSlot.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Topology/Topology.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/Identification.hpp"
#include "test/support/MemoryHam.hpp"
#include "test/support/OutOfMemory.hpp"
#include "test/support/Presence.hpp"

namespace {

using Component::LogicalDevice::Slot;
using Doubles::byte;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::fruField;
using Doubles::fruMemory;
using Doubles::host;
using Doubles::made;
using Doubles::MemoryHam;
using Doubles::Operations;
using Doubles::Presence;
using Doubles::presence;
using Doubles::settings;
using Doubles::tlvInfo;
using Doubles::Trace;
using Drivers::ArgMap;
using Drivers::PsuSlot;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/PsuSlot";

Presence ask(Slot& bay) {
  return Doubles::presenceBy([&](char** descriptor) { return bay.getPresence(descriptor); });
}

// Start.

TEST(PsuSlotStart, TracesAsThePmbusDriverDoes) {
  FakeHam ham;
  const auto device = made<PsuSlot>(ham);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating Pmbus Device"}));
}

TEST(PsuSlotStart, HasSlotsOnly) {
  FakeHam ham;
  const auto device = made<PsuSlot>(ham);
  EXPECT_THROW(device->newPsu(settings({})), NotImplementedException);
  EXPECT_THROW(device->newFan(settings({})), NotImplementedException);
}

TEST(PsuSlotStart, HasASimulatedFru) {
  FakeHam fake;
  const auto device = made<PsuSlot>(fake);
  ASSERT_EQ(device->expectedValues(), &PsuSlot::values);
  EXPECT_EQ(PsuSlot::values.at(4).val(), 1u);
  EXPECT_EQ(PsuSlot::values.at(17).valStr(), "DPS550AB6A");
  for (const auto& [reg, value] : PsuSlot::values) {
    EXPECT_TRUE(value.isNumber() || value.valStr().size() == value.size()) << reg;
  }
}

class PsuBay : public testing::Test {
 protected:
  std::unique_ptr<Slot> bay(ArgMap args = {}, const char* id = "1") {
    args["psuId"] = id;
    std::unique_ptr<Slot> slot(device_->newSlot(settings(std::move(args))));
    host().traces.clear();
    return slot;
  }
  // A supply with these PMBus texts; the model M1 is one that bays are told of.
  void supply(const std::string& model, const std::string& serial) {
    fake_.setBlock(0x9A, byte(model.size()) + model);
    fake_.setBlock(0x9E, byte(serial.size()) + serial);
  }
  static ArgMap knowingM1(ArgMap args = {}) {
    args["model_a"] = "M1";
    args["psuFdl_a"] = "<{modelName} {serialNum}>";
    return args;
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  std::unique_ptr<PsuSlot> device_ = made<PsuSlot>(faulty_);
};

// Making bays.

TEST_F(PsuBay, TracesANewBay) {
  const std::unique_ptr<Slot> slot(device_->newSlot(settings({{"psuId", "2"}})));
  EXPECT_NE(slot, nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{5, "Creating new PsuSlot for Psu id 2"}));
}

TEST_F(PsuBay, IsNotMadeWithoutItsNumber) {
  host().traces.clear();
  EXPECT_EQ(device_->newSlot(settings({})), nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error: expected 'psuId' in slot driverArgs"}));
}

TEST_F(PsuBay, IsOneOfTwo) {
  for (const char* id : {"0", "3", "-1"}) {
    EXPECT_CHECK(bay({}, id), kUnit, "psuId == 1 || psuId == 2");
  }
}

TEST_F(PsuBay, TakesAnUnknownIdentificationForPmbus) {
  supply("M1", "S1");
  ArgMap args = knowingM1({{"identificationType", "PMBUS"}, {"psuId", "1"}});
  host().traces.clear();
  const std::unique_ptr<Slot> slot(device_->newSlot(settings(args)));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Creating new PsuSlot for Psu id 1"},
                                         Trace{0, "Invalid identification type: 'PMBUS'"}));
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
}

TEST_F(PsuBay, TakesNoIdentificationForPmbus) {
  const std::unique_ptr<Slot> slot(device_->newSlot(settings({{"psuId", "1"}})));
  EXPECT_EQ(host().traces.back(), (Trace{5, "Creating new PsuSlot for Psu id 1"}));
}

TEST_F(PsuBay, WantsWhatItsIdentificationNeeds) {
  EXPECT_CHECK_AFTER(bay({{"identificationType", "ipmi"}}),
                     (Trace{0, "PsuSlot identification type is ipmi but ipmiId not found"}), kUnit,
                     "false");
  EXPECT_CHECK_AFTER(
      bay({{"identificationType", "ipmitool_raw"}, {"ipmiRawSerialNumber", "1"}}),
      (Trace{0, "PsuSlot identification type is ipmitool_raw but ipmiRawModel not found"}), kUnit,
      "false");
  EXPECT_CHECK_AFTER(
      bay({{"identificationType", "ipmitool_raw"}, {"ipmiRawModel", "1"}}),
      (Trace{0, "PsuSlot identification type is ipmitool_raw but ipmiRawSerialNumber not found"}),
      kUnit, "false");
}

TEST_F(PsuBay, WantsATemplateForEachModel) {
  EXPECT_CHECK(bay({{"model_a", "M1"}, {"model_b", "M2"}, {"psuFdl_b", "x"}}), kUnit,
               "slotArgs_.find( psuFdlKey ) != slotArgs_.end()");
}

TEST_F(PsuBay, WantsTheBitOfEachLine) {
  EXPECT_THROW(bay({{"presenceReg", "1"}}), std::out_of_range);
  EXPECT_THROW(bay({{"statusReg", "1"}}), std::out_of_range);
}

// Lines: presence is bit 0 of register 1, status bit 3 of register 2.

class PsuBayWithLines : public PsuBay {
 protected:
  PsuBayWithLines() {
    supply("M1", "S1");
    fake_.set8(1, 0x01);
    fake_.set8(2, 0x08);
  }
  static ArgMap lines(ArgMap args = {}) {
    args.merge(
        ArgMap{{"presenceReg", "1"}, {"presenceBit", "0"}, {"statusReg", "2"}, {"statusBit", "3"}});
    return knowingM1(args);
  }
};

TEST_F(PsuBayWithLines, AreReadBeforeTheSupply) {
  const auto slot = bay(lines());
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  ASSERT_EQ(fake_.batches().size(), 4u);
  EXPECT_EQ(fake_.batches()[0], Operations{Op::read8(1)});
  EXPECT_EQ(fake_.batches()[1], Operations{Op::read8(2)});
}

TEST_F(PsuBayWithLines, SayThatTheBayIsEmpty) {
  const auto slot = bay(lines());
  fake_.set8(1, 0xFE);
  EXPECT_EQ(ask(*slot), presence(1));
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(1)}, Operations{Op::read8(2)}));
  fake_.set8(2, 0x00);
  EXPECT_EQ(ask(*slot), presence(1));
  EXPECT_THAT(host().traces, ElementsAre(Trace{7, "getPresence"}, Trace{7, "getPresence"}));
}

TEST_F(PsuBayWithLines, SayThatASupplyHasNoPower) {
  const auto slot =
      bay(lines({{"model_x", "PWR-UNKNOWN"}, {"psuFdl_x", "{modelName}/{serialNum}"}}));
  fake_.set8(2, 0xF7);
  EXPECT_EQ(ask(*slot), presence(0, "PWR-UNKNOWN/N/A"));
  EXPECT_EQ(fake_.batches().size(), 2u);
  EXPECT_THAT(host().texts(0),
              ElementsAre("PSU serialNum = 'N/A'", "PSU modelName = 'PWR-UNKNOWN'"));
}

TEST_F(PsuBayWithLines, HaveAPolarityEach) {
  struct Row {
    const char* presenceActiveLow;
    const char* statusActiveLow;
    uint8_t presence;
    uint8_t status;
    bool present;
    bool powered;
  };
  constexpr Row kRows[] = {
      {"true", "false", 0x00, 0x08, true, true},   {"true", "false", 0x01, 0x08, false, true},
      {"false", "true", 0x01, 0x00, true, true},   {"false", "true", 0x01, 0x08, true, false},
      {"true", "true", 0x00, 0x00, true, true},    {"true", "true", 0x00, 0x08, true, false},
      {"false", "false", 0x01, 0x00, true, false}, {"True", "1", 0x01, 0x08, true, true},
  };
  for (const Row& row : kRows) {
    const auto slot = bay(lines(
        {{"presenceActiveLow", row.presenceActiveLow}, {"statusActiveLow", row.statusActiveLow}}));
    fake_.set8(1, row.presence);
    fake_.set8(2, row.status);
    const Presence got = ask(*slot);
    EXPECT_EQ(got.first, row.present ? 0 : 1);
    if (row.present) {
      EXPECT_THAT(got.second, HasSubstr(row.powered ? "M1" : "PWR-UNKNOWN"));
    }
  }
}

TEST_F(PsuBayWithLines, GiveTheirStatusWhenTheyCannotBeRead) {
  const auto slot = bay(lines());
  faulty_.failOn(1, 6);
  EXPECT_EQ(ask(*slot), presence(6));
  EXPECT_THAT(fake_.batches(), IsEmpty());
  faulty_.heal();
  faulty_.failOn(2, 4);
  EXPECT_EQ(ask(*slot), presence(4));
  fake_.set8(1, 0x00);  // empty, and the other line is read all the same
  EXPECT_EQ(ask(*slot), presence(4));
}

TEST_F(PsuBayWithLines, CountOnlyTogether) {
  ArgMap presenceAlone = knowingM1({{"presenceReg", "1"}, {"presenceBit", "0"}});
  ArgMap statusAlone = knowingM1({{"statusReg", "2"}, {"statusBit", "3"}});
  fake_.set8(1, 0x00);
  fake_.set8(2, 0x00);
  EXPECT_EQ(ask(*bay(presenceAlone)), presence(0, "<M1 S1>"));
  EXPECT_EQ(ask(*bay(statusAlone)), presence(0, "<M1 S1>"));
}

TEST_F(PsuBayWithLines, MayBeAnotherDevices) {
  const char* const pins =
      R"({"did":1,"label":"Pins","driver":null,"address":{"address":32},"provideHam":0})";
  ASSERT_EQ(Topology::loadTopology(Doubles::topologyOf("H", pins).c_str()), 0);
  const auto slot = bay(lines({{"gpioDevice", "Pins"}}));
  FakeHam pinsHam;
  dynamic_cast<Component::HardwareDevice&>(*Component::DeviceBase::devices.at(1)).ham = &pinsHam;
  pinsHam.set8(1, 0x00);
  pinsHam.set8(2, 0x08);
  EXPECT_EQ(ask(*slot), presence(1));
  EXPECT_THAT(fake_.batches(), IsEmpty());
  pinsHam.set8(1, 0x01);
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
}

// Descriptors.

TEST_F(PsuBay, DescribesAModelThatItKnows) {
  supply("M1", "S1");
  const auto slot = bay(knowingM1());
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{7, "getPresence"}, Trace{7, "readSerialAndModelPmbus"},
                          Trace{0, "PSU serialNum = 'S1'"}, Trace{0, "PSU modelName = 'M1'"},
                          Trace{5, "FormatFdl::set( 'modelName', 'M1' )"},
                          Trace{5, "FormatFdl::set( 'serialNum', 'S1' )"}));
}

TEST_F(PsuBay, DescribesEachModelByItsOwnTemplate) {
  const ArgMap args = {{"model_1", "M1"},
                       {"psuFdl_1", "first {serialNum}"},
                       {"model_2", "M2"},
                       {"psuFdl_2", "second"}};
  const auto slot = bay(args);
  supply("M2", "S2");
  EXPECT_EQ(ask(*slot), presence(0, "second"));
  supply("M1", "S1");
  EXPECT_EQ(ask(*slot), presence(0, "first S1"));
}

TEST_F(PsuBay, FillsInWhatItsTemplateNames) {
  supply("M1", "S1");
  const auto slot = bay({{"model_a", "M1"},
                         {"psuFdl_a",
                          "{\"m\":\"{model}{modelName}\",\"s\":\"{serial}{serialNum}\","
                          "\"i\":{psuId},\"f\":\"{airflow}\",\"o\":\"{other}\"}"},
                         {"airflow", "frontToBack"}},
                        "2");
  EXPECT_EQ(ask(*slot), presence(0,
                                 "{\"m\":\"M1M1\",\"s\":\"S1S1\",\"i\":2,"
                                 "\"f\":\"frontToBack\",\"o\":\"{other}\"}"));
}

TEST_F(PsuBay, SaysThatAnUnknownModelIsUnmanaged) {
  supply("M9", "S9");
  const auto slot = bay(knowingM1());
  EXPECT_EQ(ask(*slot), presence(0, "unmanaged power supply, modelName: M9, serialNum: S9"));
  EXPECT_THAT(host().texts(0), ElementsAre("PSU serialNum = 'S9'", "PSU modelName = 'M9'",
                                           "Unknown modelName. PSU is unmanaged"));
  EXPECT_EQ(ask(*bay()), presence(0, "unmanaged power supply, modelName: M9, serialNum: S9"));
}

TEST_F(PsuBay, TellsOfTextsThatAreMissing) {
  struct Row {
    const char* model;
    const char* serial;
    const char* trace;
  };
  for (const auto& [model, serial, trace] : {Row{"", "S1", "Failed to read PSU info 'S1' ''"},
                                             {"M1", "", "Failed to read PSU info '' 'M1'"},
                                             {"", "", "Failed to read PSU info '' ''"}}) {
    supply(model, serial);
    const auto slot = bay(knowingM1());
    EXPECT_EQ(ask(*slot).first, 0);
    EXPECT_THAT(host().texts(7), ElementsAre("getPresence", "readSerialAndModelPmbus", trace));
  }
}

TEST_F(PsuBay, KeepsItsDescriptorForTheSameSupply) {
  supply("M1", "S1");
  const auto slot = bay(knowingM1());
  char* first = nullptr;
  char* second = nullptr;
  EXPECT_EQ(slot->getPresence(&first), 0);
  host().traces.clear();
  EXPECT_EQ(slot->getPresence(&second), 0);
  EXPECT_STREQ(first, second);
  EXPECT_NE(first, second);
  std::free(first);
  std::free(second);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{7, "getPresence"}, Trace{7, "readSerialAndModelPmbus"},
                          Trace{7, "Using cached fdl"}));
}

TEST_F(PsuBay, DescribesAnewWhenModelOrSerialNumberIsAnother) {
  supply("M1", "S1");
  const auto slot = bay(knowingM1({{"model_b", "M2"}, {"psuFdl_b", "<{modelName} {serialNum}>"}}));
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  supply("M1", "S2");
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S2>"));
  supply("M2", "S2");
  EXPECT_EQ(ask(*slot), presence(0, "<M2 S2>"));
  supply("M9", "S2");
  EXPECT_THAT(ask(*slot).second, HasSubstr("unmanaged"));
  host().traces.clear();
  EXPECT_THAT(ask(*slot).second, HasSubstr("unmanaged"));
  EXPECT_TRUE(host().traced(7, "Using cached fdl"));
}

TEST_F(PsuBay, KeepsItsDescriptorOverAFailure) {
  supply("M1", "S1");
  const auto slot = bay(knowingM1());
  faulty_.failNext(6);
  EXPECT_EQ(ask(*slot), presence(6));
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  faulty_.failNext(6);
  EXPECT_EQ(ask(*slot), presence(6));
  host().traces.clear();
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  EXPECT_TRUE(host().traced(7, "Using cached fdl"));
}

TEST_F(PsuBay, ReportsThatItHasNoMemory) {
  supply("M1", "S1");
  const auto slot = bay(knowingM1());
  Doubles::outOfMemory = true;
  const Presence got = ask(*slot);
  Doubles::outOfMemory = false;
  EXPECT_EQ(got, presence(6));
}

// Hostile texts. A value that held its own placeholder would be filled in for ever.

TEST_F(PsuBay, FillsInAValueThatHoldsItsOwnPlaceholder) {
  supply("M1", "{serialNum}");
  EXPECT_EQ(ask(*bay(knowingM1())), presence(0, "<M1 ?serialNum?>"));
  supply("{modelName}", "{serialNum}");
  const auto slot = bay({{"model_a", "{modelName}"}, {"psuFdl_a", "{modelName} {serialNum}"}});
  EXPECT_EQ(ask(*slot), presence(0, "?modelName? ?serialNum?"));
}

TEST_F(PsuBay, FillsInAnArgumentThatHoldsItsOwnPlaceholder) {
  supply("M1", "S1");
  const auto slot = bay({{"model_a", "M1"}, {"psuFdl_a", "{x} {psuFdl_a}"}, {"x", "{x}{x}"}});
  EXPECT_EQ(ask(*slot), presence(0, "?x??x? ?x? ?psuFdl_a?"));
}

TEST_F(PsuBay, LetsNoTextLeaveItsPlaceInADescriptor) {
  const ArgMap args = {{"model_a", "M1"}, {"psuFdl_a", R"({"serial":"{serialNum}"})"}};
  const auto slot = bay(args);
  supply("M1", R"(",{\"x":1})");
  EXPECT_EQ(ask(*slot), presence(0, R"({"serial":"?,???x?:1?"})"));
  supply("M1", std::string("a\0b\n\x7F\xFF\t ", 8));
  EXPECT_EQ(ask(*slot), presence(0, R"({"serial":"a?b???? "})"));
}

TEST_F(PsuBay, MakesTheTextOfAnUnknownModelHarmlessToo) {
  supply("{\"}", "\\\n");
  EXPECT_EQ(ask(*bay()), presence(0, "unmanaged power supply, modelName: ???, serialNum: ??"));
}

// Identification over PMBus.

TEST_F(PsuBay, TrimsTheModelAlone) {
  supply("  DPS550AB6A\t", "S1 ");
  const auto slot = bay({{"model_a", "DPS550AB6A"}, {"psuFdl_a", "<{model}><{serial}>"}});
  EXPECT_EQ(ask(*slot), presence(0, "<DPS550AB6A><S1 >"));
}

TEST_F(PsuBay, ReportsASupplyThatDoesNotAnswer) {
  EXPECT_EQ(ask(*bay(knowingM1())), presence(4));
  supply("M1", "S1");
  faulty_.failAt(1, 6);
  EXPECT_EQ(ask(*bay(knowingM1())), presence(6));
}

// Identification by a memory.

struct MemoryBay {
  explicit MemoryBay(const std::string& memory, ArgMap args,
                     MemoryHam::AtEnd atEnd = MemoryHam::AtEnd::kFails)
      : ham(memory, atEnd) {
    args.merge(ArgMap{{"psuId", "1"}, {"model_a", "M1"}, {"psuFdl_a", "<{model} {serial}>"}});
    slot.reset(device->newSlot(settings(std::move(args))));
    host().traces.clear();
  }

  MemoryHam ham;
  std::unique_ptr<PsuSlot> device = made<PsuSlot>(ham);
  std::unique_ptr<Slot> slot;
};

TEST(PsuBayWithTlvInfo, DescribesItsSupply) {
  MemoryBay bay(tlvInfo({{0x22, "M1"}, {0x23, "S1"}}), {{"identificationType", "tlv"}});
  EXPECT_EQ(ask(*bay.slot), presence(0, "<M1 S1>"));
}

TEST(PsuBayWithTlvInfo, IsEmptyWithoutAMemory) {
  MemoryBay bay("", {{"identificationType", "tlv"}});
  EXPECT_EQ(ask(*bay.slot), presence(1));
}

TEST(PsuBayWithTlvInfo, MakesItsTextsHarmless) {
  MemoryBay bay(tlvInfo({{0x22, "M1"}, {0x23, "{serial}"}}), {{"identificationType", "tlv"}});
  EXPECT_EQ(ask(*bay.slot), presence(0, "<M1 ?serial?>"));
}

TEST(PsuBayWithFru, DescribesItsSupply) {
  MemoryBay bay(fruMemory({fruField("Maker"), fruField("M1 "), fruField("PN"), fruField("V"),
                           fruField("S1 ")}),
                {{"identificationType", "ipmi"}, {"ipmiId", "1"}});
  EXPECT_EQ(ask(*bay.slot), presence(0, "<M1 S1 >"));
}

TEST(PsuBayWithFru, GivesTheStatusOfItsMemory) {
  MemoryBay bay("", {{"identificationType", "ipmi"}, {"ipmiId", "1"}});
  EXPECT_EQ(ask(*bay.slot), presence(6));
}

TEST(PsuBayWithFru, ReadsItsSimulatedOne) {
  std::string memory(64, '\0');
  for (const auto& [reg, value] : PsuSlot::values) {
    memory.replace(reg, value.size(), value.isNumber() ? byte(value.val()) : value.valStr());
  }
  MemoryBay bay(memory, {{"identificationType", "ipmi"},
                         {"ipmiId", "1"},
                         {"model_b", "DPS550AB6A"},
                         {"psuFdl_b", "{model} {serial}"}});
  EXPECT_EQ(ask(*bay.slot), presence(0, "DPS550AB6A SIM0000001"));
}

// Identification by one status register.

TEST_F(PsuBay, OfAWedgeIsFilledByBit0) {
  const ArgMap args = {{"identificationType", "wedge"},
                       {"model_a", "PWR-WEDGE"},
                       {"psuFdl_a", "<{model} {serial}>"}};
  const auto first = bay(args, "1");
  const auto second = bay(args, "2");
  for (unsigned status = 0; status < 256; ++status) {
    fake_.set8(8, static_cast<uint8_t>(status));
    EXPECT_EQ(ask(*first), status % 2 == 1 ? presence(1) : presence(0, "<PWR-WEDGE N/A>"))
        << status;
    EXPECT_EQ(ask(*second), presence(0, "<PWR-WEDGE N/A>")) << status;
  }
}

TEST_F(PsuBay, OfAWedgeIsEmptyWhenItDoesNotAnswer) {
  faulty_.failAlways(6);
  EXPECT_EQ(ask(*bay({{"identificationType", "wedge"}}, "2")), presence(1));
}

// Identification by a command. Its stub keeps its arguments, one a line, and answers as it is told.

class PsuBayWithCommand : public PsuBay {
 protected:
  PsuBayWithCommand() {
    std::string name = testing::TempDir() + "psu-slot-XXXXXX";
    EXPECT_NE(::mkdtemp(name.data()), nullptr);
    directory_ = name;
    write("zuIpmi",
          "#!/bin/sh\ncd " + name +
              "\n: > arguments\nfor a in \"$@\"; do printf '<%s>' \"$a\" >> arguments; done\n"
              "cat answer\nexit $(cat status)\n");
    ::chmod((directory_ / "zuIpmi").c_str(), 0755);
    write("status", "0");
    ::setenv("PATH", (name + ":" + std::getenv("PATH")).c_str(), 1);
  }
  ~PsuBayWithCommand() override { std::filesystem::remove_all(directory_); }

  void write(const char* file, const std::string& text) const {
    std::ofstream(directory_ / file) << text;
  }
  std::string arguments() const {
    std::ifstream in(directory_ / "arguments");
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static ArgMap raw(ArgMap args = {}) {
    args.merge(ArgMap{{"identificationType", "ipmitool_raw"},
                      {"ipmiId", "7"},
                      {"ipmiRawModel", "0x1 0x2"},
                      {"ipmiRawSerialNumber", "0x3"}});
    return knowingM1(args);
  }

  std::filesystem::path directory_;
};

TEST_F(PsuBayWithCommand, TracesItsCommandWhenItIsMade) {
  ArgMap args = raw();
  args["psuId"] = "1";
  const std::unique_ptr<Slot> slot(device_->newSlot(settings(args)));
  EXPECT_EQ(host().traces.back(),
            (Trace{0,
                   "psuSlot ipmi command: 'zuIpmi raw psuSlot '7' ModelNumber='0x1 0x2' "
                   "SerialNumber='0x3''"}));
  EXPECT_THAT(arguments(), IsEmpty());
}

TEST_F(PsuBayWithCommand, TakesSerialNumberAndModelFromItsOutput) {
  write("answer", "S1 M1\n");
  const auto slot = bay(raw());
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>"));
  EXPECT_EQ(arguments(), "<raw><psuSlot><7><ModelNumber=0x1 0x2><SerialNumber=0x3>");
  write("answer", "\n\t S2\n\nM1 more words\n");
  EXPECT_EQ(ask(*slot), presence(0, "<M1 S2>"));
}

TEST_F(PsuBayWithCommand, NamesTheBayItself) {
  write("answer", "S1 M1");
  EXPECT_EQ(ask(*bay(knowingM1({{"identificationType", "ipmitool"}}), "2")),
            presence(0, "<M1 S1>"));
  EXPECT_EQ(arguments(), "<psuSlot><2>");
}

TEST_F(PsuBayWithCommand, HasAnotherFormForTheApi) {
  write("answer", "S1 M1");
  ask(*bay(raw({{"useApi", "true"}})));
  EXPECT_EQ(arguments(), "<api><psuSlot><7><ModelNumber=0x1 0x2><SerialNumber=0x3>");
  ask(*bay({{"identificationType", "ipmitool"}, {"useApi", "true"}, {"ipmiId", "x"}}));
  EXPECT_EQ(arguments(), "<api><psuSlot><x>");
  ask(*bay(raw({{"useApi", "yes"}})));
  EXPECT_THAT(arguments(), testing::StartsWith("<raw>"));
}

TEST_F(PsuBayWithCommand, PassesEveryValueAsItIs) {
  write("answer", "S1 M1");
  const std::string mark = directory_ / "run";
  for (const std::string& hostile :
       {"; touch " + mark, "$(touch " + mark + ")", "`touch " + mark + "`",
        "' ; touch " + mark + " '", "\" && touch " + mark + " \"", "a\ntouch " + mark,
        "| touch " + mark, "> " + mark, std::string("'"), std::string("''\\''"), std::string("*"),
        std::string("")}) {
    const auto slot = bay(
        raw({{"ipmiId", hostile}, {"ipmiRawModel", hostile}, {"ipmiRawSerialNumber", hostile}}));
    EXPECT_EQ(ask(*slot), presence(0, "<M1 S1>")) << hostile;
    EXPECT_EQ(arguments(), "<raw><psuSlot><" + hostile + "><ModelNumber=" + hostile +
                               "><SerialNumber=" + hostile + ">");
    EXPECT_FALSE(std::filesystem::exists(mark)) << hostile;
  }
}

TEST_F(PsuBayWithCommand, MakesItsOutputHarmless) {
  write("answer", "{serialNum} M1");
  EXPECT_EQ(ask(*bay(raw())), presence(0, "<M1 ?serialNum?>"));
}

TEST_F(PsuBayWithCommand, TellsOfOutputThatIsMissing) {
  write("answer", "S1\n");
  const auto slot = bay(raw());
  EXPECT_EQ(ask(*slot), presence(0, "unmanaged power supply, modelName: , serialNum: S1"));
  EXPECT_THAT(host().texts(7), ElementsAre("getPresence", "Failed to read PSU info 'S1' ''"));
}

TEST_F(PsuBayWithCommand, ReportsACommandThatFails) {
  write("answer", "S1 M1");
  write("status", "1");
  EXPECT_EQ(ask(*bay(raw())), presence(6));
  std::filesystem::remove(directory_ / "zuIpmi");
  EXPECT_EQ(ask(*bay(raw())), presence(6));
}

}  // namespace
