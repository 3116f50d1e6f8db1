// SPDX-License-Identifier: Apache-2.0
#include "Drivers/MultiSlot.hpp"

#include <gmock/gmock.h>

#include <array>
#include <memory>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Device.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Slot;
using Doubles::describeBare;
using Doubles::host;
using Doubles::settings;
using Doubles::Trace;
using Drivers::MultiSlot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kUnit = "Drivers/MultiSlot";

// A kind of module: a slot that answers as it is told.
class Kind : public Slot {
 public:
  explicit Kind(std::string text) : text_(std::move(text)) {}

  pl_status getPresence(char** name) override {
    asked.push_back(text_);
    if (status == 0) {
      *name = text_.data();
    }
    return status;
  }

  pl_status status = 1;
  static inline std::vector<std::string> asked;  // every kind that was asked, in order

 private:
  std::string text_;
};

// Makes the kinds that the slots' "kind" argument names, one object each time.
class KindDevice : public Component::HardwareDevice {
 public:
  Slot* newSlot(const DriverArgs& args) override {
    const std::string kind = args.driverArgs.at("kind");
    return made.emplace_back(std::make_unique<Kind>(kind)).get();
  }
  static inline std::vector<std::unique_ptr<Kind>> made;
};

class MultiSlotBay : public testing::Test {
 protected:
  MultiSlotBay() : device_(dynamic_cast<MultiSlot*>(MultiSlot::create(settings({}), nullptr))) {
    Drivers::drivers["Kind"] = [](const auto&, auto*) { return new KindDevice; };
    device_->deviceDriverArgsIs({{"a", kindText("A")}, {"b", kindText("B")}, {"c", kindText("C")}});
    host().traces.clear();
  }

  static std::string kindText(const std::string& kind) {
    return describeBare(7, "Kind", R"({"kind":")" + kind + R"("})");
  }
  std::unique_ptr<Slot> bay(const char* id = "1") {
    std::unique_ptr<Slot> made(device_->newSlot(settings({{"id", id}})));
    host().traces.clear();
    return made;
  }
  static void present(std::array<pl_status, 3> statuses) {
    for (size_t i = 0; i < statuses.size(); ++i) {
      KindDevice::made.at(i)->status = statuses[i];
    }
  }
  // What a bay answers, and which kinds it asked for that.
  static std::pair<pl_status, std::string> ask(Slot& bay) {
    Kind::asked.clear();
    char none[] = "none";
    char* name = none;
    const pl_status status = bay.getPresence(&name);
    return {status, name};
  }

  std::unique_ptr<MultiSlot> device_;
};

// Making bays.

TEST(MultiSlotStart, TracesItself) {
  const std::unique_ptr<Component::MultiDevice> device(MultiSlot::create(settings({}), nullptr));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating MultiSlot Device"}));
}

TEST(MultiSlotStart, HasSlotsOnly) {
  const std::unique_ptr<Component::MultiDevice> device(MultiSlot::create(settings({}), nullptr));
  EXPECT_THROW(device->newPsu(settings({})), NotImplementedException);
}

TEST_F(MultiSlotBay, WantsItsId) {
  EXPECT_CHECK(device_->newSlot(settings({})), kUnit, "it != args.driverArgs.end()");
}

TEST_F(MultiSlotBay, IsOneOfFive) {
  for (const char* id : {"0", "6", "-1"}) {
    EXPECT_CHECK(bay(id), kUnit, "slotId >= 1 && slotId <= 5");
  }
  EXPECT_NE(bay("1"), nullptr);
  EXPECT_NE(bay("5"), nullptr);
  EXPECT_NE(bay("257"), nullptr);  // in 8 bits
}

TEST_F(MultiSlotBay, AddsEveryKindInTheOrderOfItsKey) {
  const std::unique_ptr<Slot> made(device_->newSlot(settings({{"id", "3"}})));
  EXPECT_THAT(host().texts(5), ElementsAre("Adding slot 3 subdevice: a ->" + kindText("A"),
                                           "Adding slot 3 subdevice: b ->" + kindText("B"),
                                           "Adding slot 3 subdevice: c ->" + kindText("C")));
  EXPECT_EQ(KindDevice::made.size(), 3u);
}

TEST_F(MultiSlotBay, AddsEveryKindAgainForEachBay) {
  const auto first = bay("1");
  const auto second = bay("2");
  EXPECT_EQ(ask(*second), std::pair(1, std::string("none")));
  EXPECT_THAT(Kind::asked, ElementsAre("A", "B", "C", "A", "B", "C"));
  EXPECT_EQ(ask(*first), std::pair(1, std::string("none")));
  EXPECT_THAT(Kind::asked, ElementsAre("A", "B", "C", "A", "B", "C"));
}

TEST_F(MultiSlotBay, WithoutKindsIsEmpty) {
  device_->deviceDriverArgsIs({});
  EXPECT_EQ(ask(*bay()), std::pair(1, std::string("none")));
}

// Presence.

TEST_F(MultiSlotBay, TracesThatItIsAsked) {
  const auto made = bay();
  ask(*made);
  EXPECT_EQ(host().traces.front(), (Trace{7, "getPresence"}));
}

TEST_F(MultiSlotBay, AnswersForTheFirstKindThatIsPresent) {
  struct Row {
    std::array<pl_status, 3> statuses;
    pl_status status;
    const char* name;
    std::vector<std::string> asked;
  };
  const Row rows[] = {
      {{0, 0, 0}, 0, "A", {"A"}},
      {{0, 1, 1}, 0, "A", {"A"}},
      {{1, 0, 1}, 0, "B", {"A", "B"}},
      {{1, 0, 0}, 0, "B", {"A", "B"}},
      {{1, 1, 0}, 0, "C", {"A", "B", "C"}},
      {{6, 4, 0}, 0, "C", {"A", "B", "C"}},
      {{1, 1, 1}, 1, "none", {"A", "B", "C"}},
      {{6, 6, 6}, 1, "none", {"A", "B", "C"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.statuses));
    KindDevice::made.clear();
    Component::DeviceBase::devices.clear();
    const std::unique_ptr<MultiSlot> device(
        dynamic_cast<MultiSlot*>(MultiSlot::create(settings({}), nullptr)));
    device->deviceDriverArgsIs({{"a", kindText("A")}, {"b", kindText("B")}, {"c", kindText("C")}});
    const std::unique_ptr<Slot> made(device->newSlot(settings({{"id", "1"}})));
    present(row.statuses);
    EXPECT_EQ(ask(*made), std::pair(row.status, std::string(row.name)));
    EXPECT_EQ(Kind::asked, row.asked);
  }
}

TEST_F(MultiSlotBay, AsksTheKindFirstThatItFoundLast) {
  const auto made = bay();
  present({1, 0, 1});
  ask(*made);
  EXPECT_EQ(ask(*made), std::pair(0, std::string("B")));
  EXPECT_THAT(Kind::asked, ElementsAre("B"));
  present({0, 0, 1});  // it stays with B
  EXPECT_EQ(ask(*made), std::pair(0, std::string("B")));
}

TEST_F(MultiSlotBay, LooksForAnotherKindWhenTheLastIsGone) {
  const auto made = bay();
  present({1, 0, 1});
  ask(*made);
  present({1, 1, 0});
  EXPECT_EQ(ask(*made), std::pair(0, std::string("C")));
  EXPECT_THAT(Kind::asked, ElementsAre("B", "A", "B", "C"));
  EXPECT_EQ(ask(*made), std::pair(0, std::string("C")));
  EXPECT_THAT(Kind::asked, ElementsAre("C"));
}

TEST_F(MultiSlotBay, RemembersItsKindWhileItIsEmpty) {
  const auto made = bay();
  present({1, 1, 0});
  ask(*made);
  present({1, 1, 1});
  EXPECT_EQ(ask(*made), std::pair(1, std::string("none")));
  EXPECT_THAT(Kind::asked, ElementsAre("C", "A", "B", "C"));
  present({0, 1, 0});
  EXPECT_EQ(ask(*made), std::pair(0, std::string("C")));
  EXPECT_THAT(Kind::asked, ElementsAre("C"));
}

// Every three looks that can follow each other: the kinds that are present are the bits of a look.
TEST_F(MultiSlotBay, IsRightInEveryOrderOfPresence) {
  constexpr unsigned kLooks = 8;
  const auto made = bay();
  std::string last;
  for (unsigned course = 0; course < kLooks * kLooks * kLooks; ++course) {
    for (unsigned look : {course % kLooks, course / kLooks % kLooks, course / kLooks / kLooks}) {
      std::string there;
      for (unsigned kind = 0; kind < 3; ++kind) {
        const bool isThere = (look >> kind & 1) != 0;
        KindDevice::made.at(kind)->status = isThere ? 0 : 1;
        there += isThere ? std::string(1, static_cast<char>('A' + kind)) : "";
      }
      if (there.empty()) {
        EXPECT_EQ(ask(*made), std::pair(1, std::string("none"))) << course;
        continue;
      }
      if (last.empty() || there.find(last) == std::string::npos) {
        last = there.substr(0, 1);
      }
      EXPECT_EQ(ask(*made), std::pair(0, last)) << course;
    }
  }
}

TEST_F(MultiSlotBay, ForgetsItsKindWhenAnotherBayIsMade) {
  const auto first = bay("1");
  present({1, 0, 1});
  ask(*first);
  bay("2");
  present({0, 0, 1});
  EXPECT_EQ(ask(*first), std::pair(0, std::string("A")));
  EXPECT_THAT(Kind::asked, ElementsAre("A"));
}

// Kinds that cannot be made.

TEST_F(MultiSlotBay, PassesOverAKindThatCannotBeMade) {
  device_->deviceDriverArgsIs({{"a", "{"},
                               {"b", kindText("B")},
                               {"c", describeBare(8, "NoSuchDriver")},
                               {"d", kindText("D")}});
  const std::unique_ptr<Slot> made(device_->newSlot(settings({{"id", "2"}})));
  EXPECT_TRUE(host().traced(0, "Failed to add slot 2 subdevice with key='a'"));
  EXPECT_TRUE(host().traced(0, "Failed to add slot 2 subdevice with key='c'"));
  EXPECT_FALSE(host().traced(0, "Failed to add slot 2 subdevice with key='b'"));
  EXPECT_EQ(ask(*made), std::pair(1, std::string("none")));
  EXPECT_THAT(Kind::asked, ElementsAre("B", "D"));
  KindDevice::made.at(1)->status = 0;
  EXPECT_EQ(ask(*made), std::pair(0, std::string("D")));
}

TEST_F(MultiSlotBay, OfKindsThatCannotBeMadeIsEmpty) {
  device_->deviceDriverArgsIs({{"a", "{"}});
  const auto made = bay();
  EXPECT_EQ(ask(*made), std::pair(1, std::string("none")));
  EXPECT_THAT(Kind::asked, IsEmpty());
}

}  // namespace
