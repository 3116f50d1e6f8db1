// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Helpers.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <memory>

#include "Components/Gpio.hpp"
#include "Components/HardwareDevice.hpp"
#include "Drivers/Dummy.hpp"
#include "Topology/Topology.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::HardwareDevice;
using Component::LogicalDevice::RegGpio;
using Doubles::host;
using Doubles::Trace;
using Drivers::FormatFdl;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* kUnit = "Drivers/Helpers";
constexpr int kFailed = 6;

// Filling templates.

TEST(FormatFdl, ReplacesEveryPlaceholder) {
  FormatFdl format("{a}-{a} {b}");
  format.start();
  EXPECT_TRUE(format.set("a", "1"));
  EXPECT_TRUE(format.set("b", "two"));
  EXPECT_EQ(format.str(), "1-1 two");
}

TEST(FormatFdl, TracesKeyAndValue) {
  FormatFdl format("{a}");
  format.start();
  format.set("a", "1");
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "FormatFdl::set( 'a', '1' )"}));
}

TEST(FormatFdl, BeginsAnewFromItsTemplate) {
  FormatFdl format("{a}");
  format.start();
  format.set("a", "1");
  ASSERT_EQ(format.str(), "1");
  format.start();
  format.set("a", "2");
  EXPECT_STREQ(format.charPtr(), "2");
}

TEST(FormatFdl, ReplacesAPlaceholderThatAnotherValueBrought) {
  FormatFdl format("{a}");
  format.start();
  format.set("a", "<{b}>");
  format.set("b", "x");
  EXPECT_EQ(format.str(), "<x>");
}

TEST(FormatFdl, StopsOnAnUnknownKey) {
  FormatFdl format("{a}");
  format.start();
  EXPECT_CHECK_AFTER(format.set("b", "1"), (Trace{0, "Error: FormatFdl::set -- invalid key '{b}'"}),
                     kUnit, "0 && \"Invalid key in FormatFdl::set\"");
}

TEST(FormatFdl, StopsOnAKeyThatIsFilledAlready) {
  FormatFdl format("{a}");
  format.start();
  format.set("a", "1");
  EXPECT_CHECK(format.set("a", "1"), kUnit, "0 && \"Invalid key in FormatFdl::set\"");
}

TEST(FormatFdl, WantsItsStart) {
  FormatFdl format("{a}");
  EXPECT_CHECK_AFTER(format.set("a", "1"), (Trace{5, "FormatFdl::set( 'a', '1' )"}), kUnit,
                     "active_ && \"FormatFdl: Must call start() before set(...)\"");
  EXPECT_CHECK(format.charPtr(), kUnit,
               "active_ && \"FormatFdl: Must call start() before charPtr()\"");
  EXPECT_CHECK(format.str(), kUnit, "active_ && \"FormatFdl: Must call start() before str()\"");
}

TEST(FormatFdl, IsReadOncePerStart) {
  FormatFdl format("text");
  format.start();
  format.str();
  EXPECT_CHECK(format.str(), kUnit, "active_ && \"FormatFdl: Must call start() before str()\"");
  format.start();
  format.charPtr();
  EXPECT_CHECK(format.charPtr(), kUnit,
               "active_ && \"FormatFdl: Must call start() before charPtr()\"");
}

// Texts that a device gave.

TEST(Harmless, TakesAwayWhatLeavesItsPlace) {
  EXPECT_EQ(Drivers::harmless("{serialNum}"), "?serialNum?");
  EXPECT_EQ(Drivers::harmless("a\"b\\c"), "a?b?c");
  EXPECT_EQ(Drivers::harmless(std::string("\0\n\t\x1F\x7F\x80\xFF", 7)), "???????");
}

TEST(Harmless, KeepsWhatCanBePrinted) {
  for (char c = ' '; c <= '~'; ++c) {
    if (std::string("{}\"\\").find(c) == std::string::npos) {
      EXPECT_EQ(Drivers::harmless(std::string(1, c)), std::string(1, c));
    }
  }
  EXPECT_EQ(Drivers::harmless(""), "");
}

TEST(Harmless, MakesAnEndOfATextThatHoldsItsOwnPlaceholder) {
  FormatFdl format("{a} {b}");
  format.start();
  format.set("a", Drivers::harmless("{a}{b}"));
  format.set("b", Drivers::harmless("{a}"));
  EXPECT_EQ(format.str(), "?a??b? ?a?");
}

// Devices by label. They take no HAM here.

class ByLabel : public testing::Test {
 protected:
  static void load(const std::string& device) {
    ASSERT_EQ(Topology::loadTopology(Doubles::topologyOf("H", device).c_str()), 0);
    host().traces.clear();
  }
  static std::string labelled(const char* driver) {
    return std::string(R"({"did":1,"label":"PSoC","address":{"address":32},"provideHam":0,)") +
           R"("driver":)" + driver + "}";
  }
};

TEST_F(ByLabel, MakesTheDeviceOnFirstUse) {
  load(labelled("\"Dummy\""));
  HardwareDevice* device = Drivers::getHardwareDeviceByLabel("PSoC", "Other");
  EXPECT_NE(dynamic_cast<Drivers::Dummy*>(device), nullptr);
  EXPECT_EQ(Drivers::getHardwareDeviceByLabel("PSoC", "Other"), device);
}

TEST_F(ByLabel, LetsTheFirstCallerChooseAMissingDriver) {
  load(labelled("null"));
  Drivers::getHardwareDeviceByLabel("PSoC", "GpioDriver");
  Drivers::getHardwareDeviceByLabel("PSoC", "HalvorsaPsoc");
  EXPECT_EQ(Topology::getDeviceByLabel("PSoC")->driverArgs->driver, "GpioDriver");
}

TEST_F(ByLabel, StopsOnAnUnknownLabel) {
  load(labelled("\"Dummy\""));
  EXPECT_CHECK_AFTER(Drivers::getHardwareDeviceByLabel("psoc", "Dummy"),
                     (Trace{0, "Unable to locate device psoc"}), kUnit, "device");
}

TEST_F(ByLabel, StopsOnADeviceThatIsListedWithoutADriver) {
  load(R"({"did":1,"label":"PSoC"})");
  EXPECT_CHECK_AFTER(Drivers::getHardwareDeviceByLabel("PSoC", "Dummy"),
                     (Trace{0, "Device PSoC has no driver in the topology"}), kUnit,
                     "device->driverArgs");
}

TEST_F(ByLabel, StopsOnADeviceThatCannotBeMade) {
  load(labelled("\"NoSuchDriver\""));
  EXPECT_CHECK_AFTER(Drivers::getHardwareDeviceByLabel("PSoC", "Dummy"),
                     (Trace{0, "driver NoSuchDriver not found"}), kUnit, "dev");
}

TEST_F(ByLabel, ServesALineByTheDummyDriver) {
  load(labelled("null"));
  const std::unique_ptr<Component::LogicalDevice::Gpio> gpio(
      Drivers::getRegGpioForDevice("PSoC", 10, 1));
  const auto& line = dynamic_cast<RegGpio&>(*gpio);
  EXPECT_NE(dynamic_cast<Drivers::Dummy*>(line.device), nullptr);
  EXPECT_EQ(line.reg, 10u);
  EXPECT_EQ(line.bitpos, 1u);
}

// Lines of a device.

class NoLines : public HardwareDevice {
 public:
  Component::LogicalDevice::Gpio* newGpio(const Drivers::DriverArgs&) override { return nullptr; }
};

class Line : public Component::LogicalDevice::Gpio {
 public:
  pl_status bitClear() override { return 0; }
  pl_status bitSet() override { return 0; }
  pl_status bitRead(unsigned int*) override { return 0; }
};

// Keeps the arguments that it is asked for a line with.
class AnyLine : public HardwareDevice {
 public:
  Component::LogicalDevice::Gpio* newGpio(const Drivers::DriverArgs& args) override {
    asked = args;
    return new Line;
  }
  Drivers::DriverArgs asked;
};

TEST(RegGpioForDevice, IsBoundToDeviceRegisterAndBit) {
  Drivers::Dummy device;
  const std::unique_ptr<Component::LogicalDevice::Gpio> gpio(
      Drivers::getRegGpioForDevice(&device, 4294967295u / 4, 7));
  const auto& line = dynamic_cast<RegGpio&>(*gpio);
  EXPECT_EQ(line.device, &device);
  EXPECT_EQ(line.reg, 1073741823u);
  EXPECT_EQ(line.bitpos, 7u);
  EXPECT_FALSE(line.writeOnly);
}

TEST(RegGpioForDevice, StopsOnADeviceWithoutLines) {
  NoLines device;
  EXPECT_CHECK(Drivers::getRegGpioForDevice(&device, 10, 1), kUnit, "gpio");
}

TEST(RegGpioForDevice, HandsOverRegisterAndBitAlone) {
  AnyLine device;
  delete Drivers::getRegGpioForDevice(&device, 3000000000u, 1);
  EXPECT_THAT(device.asked.driverArgs,
              ElementsAre(Pair("bitpos", "1"), Pair("register", "3000000000")));
}

// Texts and commands.

TEST(Trim, TakesBlanksAndTabsOffTheEnds) {
  EXPECT_EQ(Drivers::trim(" \tx y\t "), "x y");
  EXPECT_EQ(Drivers::trim("x"), "x");
  EXPECT_EQ(Drivers::trim(" \t \t"), "");
  EXPECT_EQ(Drivers::trim(""), "");
}

TEST(Trim, KeepsLineEnds) { EXPECT_EQ(Drivers::trim(" \nx\r\n "), "\nx\r\n"); }

TEST(RunCmd, CollectsStandardOutput) {
  std::string output = "old";
  EXPECT_EQ(Drivers::runCmd("printf 'a\\nb'; printf c >&2", output), 0);
  EXPECT_EQ(output, "a\nb");
}

TEST(RunCmd, CollectsLinesLongerThanItsBuffer) {
  std::string output;
  EXPECT_EQ(Drivers::runCmd("printf '%01000d' 7", output), 0);
  EXPECT_EQ(output, std::string(999, '0') + "7");
}

TEST(RunCmd, KeepsTheOutputOfACommandThatFails) {
  std::string output;
  EXPECT_EQ(Drivers::runCmd("echo half; exit 1", output), kFailed);
  EXPECT_EQ(output, "half\n");
}

TEST(RunCmd, FailsOnASignal) {
  std::string output;
  EXPECT_EQ(Drivers::runCmd("kill -9 $$", output), kFailed);
}

TEST(RunCmd, FailsOnACommandThatIsMissing) {
  std::string output;
  EXPECT_EQ(Drivers::runCmd("/nonexistent/command 2>/dev/null", output), kFailed);
}

TEST(RunCmd, FailsWithoutAPipe) {
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  std::string output = "old";
  const int status = Drivers::runCmd("true", output);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(status, kFailed);
  EXPECT_THAT(output, IsEmpty());
}

// Adding an argument to a description.

struct Freed {
  ~Freed() { std::free(text); }
  char* text = nullptr;
};

TEST(InsertDriverArg, AddsAMember) {
  Freed out;
  EXPECT_TRUE(Drivers::insertDriverArg(R"({ "did" : 1, "driverArgs" : { "a" : 2 } })", &out.text,
                                       "psuId", "1"));
  EXPECT_STREQ(out.text, R"({"did":1,"driverArgs":{"a":2,"psuId":"1"}})");
}

TEST(InsertDriverArg, WinsOverAMemberOfThatName) {
  Freed out;
  ASSERT_TRUE(Drivers::insertDriverArg(Doubles::describe(1, "X", R"({"a":"old"})").c_str(),
                                       &out.text, "a", "new"));
  EXPECT_THAT(out.text, testing::HasSubstr(R"("driverArgs":{"a":"old","a":"new"})"));
  Drivers::DriverArgs args;
  ASSERT_TRUE(args.parseJSON(out.text));
  EXPECT_EQ(args.driverArgs.at("a"), "new");
}

TEST(InsertDriverArg, EscapesWhatJsonWants) {
  Freed out;
  ASSERT_TRUE(Drivers::insertDriverArg(R"({"driverArgs":{}})", &out.text, "a\"b", "c\\d"));
  EXPECT_STREQ(out.text, R"({"driverArgs":{"a\"b":"c\\d"}})");
}

TEST(InsertDriverArg, ReportsATextThatIsNotJson) {
  char untouched[] = "untouched";
  char* out = untouched;
  EXPECT_FALSE(Drivers::insertDriverArg("{\"driverArgs\":", &out, "a", "1"));
  EXPECT_EQ(out, untouched);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "failed to parse psu devArgs: Invalid value. offset 14"}));
}

TEST(InsertDriverArg, WantsDriverArgs) {
  char* out = nullptr;
  EXPECT_CHECK(Drivers::insertDriverArg("{}", &out, "a", "1"), kUnit,
               "document.HasMember( \"driverArgs\" )");
}

}  // namespace
