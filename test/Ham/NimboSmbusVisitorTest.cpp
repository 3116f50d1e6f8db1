// SPDX-License-Identifier: Apache-2.0
#include "Ham/NimboSmbusVisitor.hpp"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

#include "Components/HardwareDevice.hpp"
#include "test/support/Check.hpp"
#include "test/support/Host.hpp"
#include "test/support/SmbusLibrary.hpp"

namespace {

using Doubles::answer;
using Doubles::host;
using Doubles::request;
using Doubles::SmbusLibrary;
using Doubles::Trace;
using testing::Contains;
using testing::IsSupersetOf;

// A device with the number 7, at 0x48, in the middle of a topology.
std::string device7Within(const std::string& before, const std::string& after) {
  return "[" + before +
         R"("devices": [{"did": 7, "driver": "Dummy", "address": {"address": 72}}])" + after + "]";
}

std::string onBus(const std::string& controller) {
  return device7Within(R"({"ham": "NimboSmbus", )" + controller, "}");
}

std::string onAccelerator(const std::string& controller) {
  return device7Within(R"({"ham": "NimboSmbus", )" + controller +
                           R"("accelerators": [{"id": 2, "busses": [{"id": 5, )",
                       "}]}]}");
}

// Reads one byte of register 1 through a HAM and expects exactly this request.
void expectRead(SmbusLibrary& library, Ham::Ham& ham, const std::string& text) {
  library.service.expect(text, answer("response { data: 'x' }"));
  uint8_t value;
  EXPECT_EQ(ham.read8(1, &value), 0);
}

// What each kind of controller makes of the address, and the master type.
struct ControllerCase {
  const char* name;
  std::string topology;
  const char* addr;
  const char* controller;
};

std::ostream& operator<<(std::ostream& out, const ControllerCase& each) { return out << each.name; }

class NimboSmbusVisitorController : public testing::TestWithParam<ControllerCase> {};

TEST_P(NimboSmbusVisitorController, GivesBusAcceleratorAndMasterType) {
  SmbusLibrary library(GetParam().topology);
  expectRead(library, SmbusLibrary::hamOf(7),
             request(std::string("type: Read size: 1 writeFlag: false addr: ") + GetParam().addr,
                     GetParam().controller));
}

INSTANTIATE_TEST_SUITE_P(
    Every, NimboSmbusVisitorController,
    testing::Values(
        ControllerCase{"SimulatedI2C", onBus(R"("type": "I2C", "id": 6, "simulated": true, )"),
                       "0x0200034800000001", "controllerAddr: 0 mastertype: SimulatedI2C"},
        ControllerCase{"I2C", onBus(R"("type": "I2C", "id": 6, )"), "0x0200034800000001",
                       "controllerAddr: 0 mastertype: I2C"},
        ControllerCase{"SCD", onAccelerator(R"("type": "SCD", "pci": 4278255360, )"),
                       "0x020082C800000001", "controllerAddr: 0xFF00FF00 mastertype: SCD"},
        ControllerCase{"IOPort", onBus(R"("type": "IOPort", "id": 6, )"), "0x0200034800000001",
                       "controllerAddr: 0 mastertype: IOPort"},
        ControllerCase{"Celestica", onAccelerator(R"("type": "Celestica", )"), "0x020082C800000001",
                       "controllerAddr: 0 mastertype: Celestica"},
        ControllerCase{"PLM", onBus(R"("type": "PLM", "id": 6, )"), "0x0200034800000001",
                       "controllerAddr: 0 mastertype: PLM"},
        ControllerCase{"SccSpi", onBus(R"("type": "SccSpi", "id": 6, )"), "0x0200034800000001",
                       "controllerAddr: 0 mastertype: SccSpi"},
        ControllerCase{"NoneInLinuxFs", onBus(R"("type": "LinuxFs", )"), "0x0200004800000001",
                       "controllerAddr: 0 mastertype: SimulatedI2C"}),
    [](const auto& each) { return std::string(each.param.name); });

// Each key of a device's address, and the bits of the address word that it fills.
struct AddressCase {
  const char* name;
  const char* address;
  const char* addr;
};

std::ostream& operator<<(std::ostream& out, const AddressCase& each) { return out << each.name; }

class NimboSmbusVisitorAddress : public testing::TestWithParam<AddressCase> {};

TEST_P(NimboSmbusVisitorAddress, IsPackedIntoTheWord) {
  SmbusLibrary library(
      std::string(R"([{"type": "I2C", "ham": "NimboSmbus", "id": 0, "devices": [)") +
      R"({"did": 7, "driver": "Dummy", "address": )" + GetParam().address + "}]}]");
  expectRead(library, SmbusLibrary::hamOf(7),
             request(std::string("type: Read size: 1 writeFlag: false addr: ") + GetParam().addr));
}

INSTANTIATE_TEST_SUITE_P(
    Every, NimboSmbusVisitorAddress,
    testing::Values(
        AddressCase{"Address", R"({"address": 127})", "0x0200007F00000001"},
        AddressCase{"AddressOfMoreThan7Bits", R"({"address": 421})", "0x0200002500000001"},
        AddressCase{"Accelerator", R"({"address": 0, "accel": 127})", "0x021FC00000000001"},
        AddressCase{"BusTimeout", R"({"address": 0, "busTimeout": 7})", "0x03C0000000000001"},
        AddressCase{"AddressSizeIsForcedTo1", R"({"address": 0, "addrSize": 2})",
                    "0x0200000000000001"},
        AddressCase{"ExtraDelay", R"({"address": 0, "extraDelay": 1})", "0x0A00000000000001"},
        AddressCase{"WriteDelay", R"({"address": 0, "writeDelay": 3})", "0x3200000000000001"},
        AddressCase{"ReadDelay", R"({"address": 0, "readDelay": 3})", "0xC200000000000001"},
        AddressCase{"All",
                    R"({"address": 85, "accel": 42, "busTimeout": 5, "addrSize": 1,
                        "extraDelay": 1, "writeDelay": 2, "readDelay": 1})",
                    "0x6B4A805500000001"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(NimboSmbusVisitor, CutsBusAndAcceleratorToSevenBits) {
  SmbusLibrary library(device7Within(
      R"({"ham": "NimboSmbus", "type": "SCD", "pci": 1,
          "accelerators": [{"id": 130, "busses": [{"id": 133, )",
      "}]}]}"));
  expectRead(library, SmbusLibrary::hamOf(7),
             request("type: Read size: 1 writeFlag: false addr: 0x020082C800000001",
                     "controllerAddr: 1 mastertype: SCD"));
}

TEST(NimboSmbusVisitor, AcceleratorAboveTheDeviceWinsOverItsAddress) {
  SmbusLibrary library(R"([{"ham": "NimboSmbus", "type": "SCD", "pci": 1,
    "accelerators": [{"id": 2, "busses": [{"id": 5, "devices": [
      {"did": 7, "driver": "Dummy", "address": {"address": 72, "accel": 99}}]}]}]}])");
  expectRead(library, SmbusLibrary::hamOf(7),
             request("type: Read size: 1 writeFlag: false addr: 0x020082C800000001",
                     "controllerAddr: 1 mastertype: SCD"));
}

// Finding the device.

// The board has device 7 with the component 70 and, on another controller, device 8.
constexpr const char* kTwoControllers = R"([
  {"type": "I2C", "ham": "NimboSmbus", "id": 3, "devices": [
    {"did": 7, "driver": "Dummy", "address": {"address": 72}, "components": [{"uid": 70}]}]},
  {"type": "PLM", "ham": "NimboSmbus", "id": 4, "devices": [
    {"did": 8, "driver": "Dummy", "address": {"address": 73}}]}
])";

Drivers::DriverArgs described(const char* text) {
  Drivers::DriverArgs args;
  EXPECT_TRUE(args.parseJSON(text));
  return args;
}

TEST(NimboSmbusVisitor, FindsTheDeviceWhoseComponentIsNamed) {
  SmbusLibrary library(kTwoControllers);
  const auto args = described(R"({"did": 8, "uid": 70, "driver": "Dummy",
                                  "address": {"address": 80, "busTimeout": 1}})");
  expectRead(library, *SmbusLibrary::hamOf(args),
             request("type: Read size: 1 writeFlag: false addr: 0x024001D000000001"));
}

TEST(NimboSmbusVisitor, FindsTheDeviceItselfWithoutAComponent) {
  SmbusLibrary library(kTwoControllers);
  const auto args = described(R"({"did": 8, "driver": "Dummy", "address": {"address": 80}})");
  expectRead(library, *SmbusLibrary::hamOf(args),
             request("type: Read size: 1 writeFlag: false addr: 0x0200025000000001",
                     "controllerAddr: 0 mastertype: PLM"));
}

TEST(NimboSmbusVisitor, GivesNoHamForAComponentThatIsNowhere) {
  const SmbusLibrary library(kTwoControllers);
  EXPECT_EQ(SmbusLibrary::hamOf(described(
                R"({"did": 8, "uid": 71, "driver": "Dummy", "address": {"address": 80}})")),
            nullptr);
  EXPECT_TRUE(host().traced(0, "Factory function returned, couldn't create HAM NimboSmbus"));
}

TEST(NimboSmbusVisitor, GivesNoHamForADeviceThatIsNowhere) {
  const SmbusLibrary library(kTwoControllers);
  EXPECT_EQ(SmbusLibrary::hamOf(
                described(R"({"did": 9, "driver": "Dummy", "address": {"address": 80}})")),
            nullptr);
}

// Muxes.

// Device 7 is behind a mux channel; `mux` describes the mux chip.
std::string behindMux(const std::string& mux, const std::string& channel = "4") {
  return R"([{"type": "I2C", "ham": "NimboSmbus", "id": 3, "devices": [)" + mux +
         R"(], "muxes": [{"did": 10, "busses": [{"id": )" + channel +
         R"(, "devices": [{"did": 7, "driver": "Dummy", "address": {"address": 72}}]}]}]}])";
}

constexpr const char* kMuxChip = R"({"did": 10, "driver": "PCA9548", "address": {"address": 112}})";

TEST(NimboSmbusVisitor, TracesEachMuxOnTheWay) {
  const SmbusLibrary library(R"([{"type": "I2C", "ham": "NimboSmbus", "id": 3,
    "devices": [{"did": 10, "driver": "PCA9548", "address": {"address": 112}}],
    "muxes": [{"did": 10, "busses": [{"id": 4,
      "devices": [{"did": 11, "driver": "PCA9548", "address": {"address": 113}}],
      "muxes": [{"did": 11, "busses": [{"id": 8,
        "devices": [{"did": 7, "driver": "Dummy", "address": {"address": 72}}]}]}]}]}]}])");
  SmbusLibrary::hamOf(7);
  EXPECT_THAT(host().traces, IsSupersetOf({Trace{3, "Mux using device 11 with value 8"},
                                           Trace{3, "Mux using device 10 with value 4"}}));
}

TEST(NimboSmbusVisitor, PassesByMuxesThatAreNotOnTheWay) {
  SmbusLibrary library(R"([{"type": "I2C", "ham": "NimboSmbus", "id": 3,
    "devices": [{"did": 7, "driver": "Dummy", "address": {"address": 72}},
                {"did": 10, "driver": "PCA9548", "address": {"address": 112}},
                {"did": 11, "driver": "PCA9548", "address": {"address": 113}}],
    "muxes": [
      {"did": 10, "busses": [{"id": 4, "devices": []}]},
      {"did": 11, "busses": [
        {"id": 1, "devices": []},
        {"id": 2, "devices": [{"did": 8, "driver": "Dummy", "address": {"address": 73}}]},
        {"id": 4, "devices": []}]}]}])");
  expectRead(library, SmbusLibrary::hamOf(7),
             request("type: Read size: 1 writeFlag: false addr: 0x020001C800000001"));
  library.service.expect(
      request("type: Write size: 0 writeFlag: false addr: 0x020001F100000002") +
          request("type: Read size: 1 writeFlag: false addr: 0x020001C900000001") +
          request("type: Write size: 0 writeFlag: false addr: 0x020001F100000000"),
      answer("response {} response { data: 'x' } response {}"));
  uint8_t value;
  EXPECT_EQ(SmbusLibrary::hamOf(8).read8(1, &value), 0);
  EXPECT_THAT(host().texts(3), testing::Not(Contains(testing::StartsWith("Mux using device 10"))));
}

TEST(NimboSmbusVisitor, SelectsTheLowEightBitsOfTheBusNumber) {
  SmbusLibrary library(behindMux(kMuxChip, "260"));
  library.service.expect(
      request("type: Write size: 0 writeFlag: false addr: 0x020001F000000004") +
          request("type: Read size: 1 writeFlag: false addr: 0x020001C800000001") +
          request("type: Write size: 0 writeFlag: false addr: 0x020001F000000000"),
      answer("response {} response { data: 'x' } response {}"));
  uint8_t value;
  EXPECT_EQ(SmbusLibrary::hamOf(7).read8(1, &value), 0);
  EXPECT_THAT(host().texts(3), Contains("Mux using device 10 with value 260"));
}

TEST(NimboSmbusVisitor, MakesTheMuxDeviceOnce) {
  const SmbusLibrary library(behindMux(kMuxChip));
  SmbusLibrary::hamOf(7);
  SmbusLibrary::hamOf(7);
  EXPECT_EQ(Component::DeviceBase::devices.count(10), 1u);
  EXPECT_THAT(host().texts(0), Contains("PCA9548 device created").Times(1));
}

TEST(NimboSmbusVisitor, MuxWithoutArgumentsStopsTheProcessWithATrace) {
  const SmbusLibrary library(behindMux(R"({"did": 10})"));
  EXPECT_CHECK_AFTER(SmbusLibrary::hamOf(7), (Trace{3, "Device 10 isn't declared inline"}),
                     "Ham/NimboSmbusVisitor", "topoDev->args");
}

TEST(NimboSmbusVisitor, MuxThatIsNowhereStopsTheProcess) {
  const SmbusLibrary library(behindMux(""));
  EXPECT_CHECK(SmbusLibrary::hamOf(7), "Ham/NimboSmbusVisitor", "topoDev");
}

TEST(NimboSmbusVisitor, MuxOfAnUnknownDriverStopsTheProcess) {
  const SmbusLibrary library(
      behindMux(R"({"did": 10, "driver": "NoSuchMux", "address": {"address": 112}})"));
  EXPECT_CHECK(SmbusLibrary::hamOf(7), "Ham/NimboSmbusVisitor", "muxDevice");
}

TEST(NimboSmbusVisitor, DeviceThatIsNoMuxThrows) {
  const SmbusLibrary library(
      behindMux(R"({"did": 10, "driver": "Dummy", "address": {"address": 112}})"));
  try {
    SmbusLibrary::hamOf(7);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Not implemented newMux");
  }
}

TEST(NimboSmbusVisitor, MuxWithoutAHamOfItsOwnStopsTheProcess) {
  const SmbusLibrary library(behindMux(
      R"({"did": 10, "driver": "PCA9548", "provideHam": 0, "address": {"address": 112}})"));
  EXPECT_CHECK(SmbusLibrary::hamOf(7), "Ham/NimboSmbusHam", "muxHam");
}

}  // namespace
