// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Helpers.hpp"

#include <sys/wait.h>

#include <cstdio>
#include <cstring>

#include "Components/HardwareDevice.hpp"
#include "Topology/Topology.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace Drivers {

namespace {

constexpr int kCommandFailed = PL_STATUS_REMOTE;
constexpr int kLineBuffer = 128;
constexpr const char* kBlanks = " \t";

}  // namespace

void FormatFdl::start() {
  text_ = format_;
  active_ = true;
}

bool FormatFdl::set(std::string key, std::string value) {
  TRACE(5, "FormatFdl::set( '%s', '%s' )", key.c_str(), value.c_str());
  CHECK_TEXT(active_, "active_ && \"FormatFdl: Must call start() before set(...)\"");
  const std::string placeholder = "{" + key + "}";
  size_t at = text_.find(placeholder);
  if (at == std::string::npos) {
    TRACE(0, "Error: FormatFdl::set -- invalid key '%s'", placeholder.c_str());
    CHECK_TEXT(false, "0 && \"Invalid key in FormatFdl::set\"");
  }
  for (; at != std::string::npos; at = text_.find(placeholder)) {
    text_.replace(at, placeholder.size(), value);
  }
  return true;
}

const char* FormatFdl::charPtr() {
  CHECK_TEXT(active_, "active_ && \"FormatFdl: Must call start() before charPtr()\"");
  active_ = false;
  return text_.c_str();
}

std::string FormatFdl::str() {
  CHECK_TEXT(active_, "active_ && \"FormatFdl: Must call start() before str()\"");
  active_ = false;
  return text_;
}

std::string harmless(std::string text) {
  for (char& c : text) {
    const bool printable = c >= ' ' && c <= '~';
    if (!printable || std::strchr("{}\"\\", c) != nullptr) {
      c = '?';
    }
  }
  return text;
}

DriverArgs& requireDriverArgs(const Topology::Device* device, const char* label) {
  if (device->driverArgs == nullptr) {
    TRACE(0, "Device %s has no driver in the topology", label);
  }
  CHECK(device->driverArgs);
  return *device->driverArgs;
}

Component::HardwareDevice* getHardwareDeviceByLabel(const char* label, std::string driverName) {
  const Topology::Device* device = Topology::getDeviceByLabel(label);
  if (device == nullptr) {
    TRACE(0, "Unable to locate device %s", label);
  }
  CHECK(device);
  DriverArgs& args = requireDriverArgs(device, label);
  if (args.driver.empty()) {
    args.driver = std::move(driverName);
  }
  Component::HardwareDevice* dev = Component::HardwareDevice::create(args, nullptr);
  CHECK(dev);
  return dev;
}

Component::LogicalDevice::Gpio* getRegGpioForDevice(Component::HardwareDevice* device, uint32_t reg,
                                                    uint32_t bitpos) {
  DriverArgs args;
  args.driverArgs["register"] = std::to_string(reg);
  args.driverArgs["bitpos"] = std::to_string(bitpos);
  Component::LogicalDevice::Gpio* gpio = device->newGpio(args);
  CHECK(gpio);
  return gpio;
}

Component::LogicalDevice::Gpio* getRegGpioForDevice(const char* label, uint32_t reg,
                                                    uint32_t bitpos) {
  return getRegGpioForDevice(getHardwareDeviceByLabel(label, "Dummy"), reg, bitpos);
}

std::string trim(const std::string& text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) {
    return "";
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

int runCmd(const char* command, std::string& output) {
  output.clear();
  std::FILE* pipe = ::popen(command, "r");
  if (pipe == nullptr) {
    return kCommandFailed;
  }
  try {
    char line[kLineBuffer];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
      output += line;
    }
  } catch (...) {
    ::pclose(pipe);
    return kCommandFailed;
  }
  const int status = ::pclose(pipe);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? PL_STATUS_OK : kCommandFailed;
}

bool insertDriverArg(const char* json, char** out, const char* key, const char* value) {
  rapidjson::Document document;
  document.Parse(json);
  if (document.HasParseError()) {
    TRACE(0, "failed to parse psu devArgs: %s offset %zd",
          rapidjson::GetParseError_En(document.GetParseError()),
          static_cast<ssize_t>(document.GetErrorOffset()));
    return false;
  }
  CHECK_TEXT(document.HasMember("driverArgs"), "document.HasMember( \"driverArgs\" )");
  auto& allocator = document.GetAllocator();
  document["driverArgs"].AddMember(rapidjson::Value(key, allocator).Move(),
                                   rapidjson::Value(value, allocator).Move(), allocator);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  document.Accept(writer);
  *out = ::strdup(buffer.GetString());
  return true;
}

}  // namespace Drivers
