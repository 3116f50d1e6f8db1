// SPDX-License-Identifier: Apache-2.0
//
// Small helpers that the drivers share.
#pragma once

#include <cstdint>
#include <string>

namespace Component {
class HardwareDevice;
namespace LogicalDevice {
class Gpio;
}
}  // namespace Component

namespace Topology {
class Device;
}

namespace Drivers {

struct DriverArgs;

// Fills the {key} placeholders of a fixed template: start(), set() for every key, then one
// charPtr() or str(). Anything else, an unknown key included, stops the process.
class FormatFdl {
 public:
  explicit FormatFdl(std::string format) : format_(std::move(format)) {}

  void start();
  // Replaces every {key} with the value and returns true. The search begins anew after each
  // replacement, so a value that holds its own placeholder would never end: what a device gave goes
  // through harmless() first.
  bool set(std::string key, std::string value);
  // The filled text; the pointer lives until the next start().
  const char* charPtr();
  std::string str();

 private:
  bool active_ = false;
  const std::string format_;
  std::string text_;
};

// A text that a device gave, made fit for a descriptor: braces, quotes, backslashes and what cannot
// be printed become '?', so that it holds no placeholder and ends no string.
std::string harmless(std::string text);

// The arguments of a topology device, which the label names in the trace. A device that is listed
// without a driver has none, and stops the process.
DriverArgs& requireDriverArgs(const Topology::Device* device, const char* label);

// The hardware device of the topology device with this label, made on first use. A device that
// names no driver is given `driverName` by the first caller. An unknown label stops the process.
Component::HardwareDevice* getHardwareDeviceByLabel(const char* label, std::string driverName);

// One bit of one register of a device; the caller owns it. The label form lets a device without a
// driver be served by "Dummy".
Component::LogicalDevice::Gpio* getRegGpioForDevice(Component::HardwareDevice* device, uint32_t reg,
                                                    uint32_t bitpos);
Component::LogicalDevice::Gpio* getRegGpioForDevice(const char* label, uint32_t reg,
                                                    uint32_t bitpos);

// The text without blanks and tabs at its ends; line ends stay.
std::string trim(const std::string& text);

// Runs a shell command and collects its standard output. 0, or 6 on any failure, with what was
// read so far in `output`. Never throws.
int runCmd(const char* command, std::string& output);

// Adds a string member to the "driverArgs" of a description. True with the new text in *out, from
// malloc and the caller's to free; false, with a trace, when the text is not JSON. A key that is
// there already then stands twice, and counts as the new value when the text is read.
bool insertDriverArg(const char* json, char** out, const char* key, const char* value);

}  // namespace Drivers
