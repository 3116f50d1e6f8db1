// SPDX-License-Identifier: Apache-2.0
#include "ipmi/FreeIpmiReader.hpp"

#include <sys/stat.h>

#include <string_view>
#include <utility>

#include "ipmi/ToolOutput.hpp"

namespace IpmiPlugin {

namespace {

// A pulled supply leaves its name and an error; with a controller that does not answer there is not
// even a name.
constexpr std::string_view kAnyDevice = "FRU Inventory Device: ";

std::string address(const Controller& controller) {
  const bool isIpv6 = controller.host.find(':') != std::string::npos;
  return (isIpv6 ? "[" + controller.host + "]" : controller.host) + ":" +
         std::to_string(controller.port);
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// The program's own words, which name it already as a rule.
[[noreturn]] void fail(const char* tool, const ToolResult& result) {
  const std::string words = firstLine(result.err);
  throw ReadError(words.empty() ? std::string(tool) + " read nothing" : words);
}

}  // namespace

FreeIpmiReader::FreeIpmiReader(Controller controller, const Configuration& configuration,
                               Clock clock)
    : controller_(std::move(controller)),
      toolDirectory_(configuration.toolDirectory),
      cacheDirectory_(configuration.cacheDirectory),
      clock_(std::move(clock)),
      runner_(controller_.timeout) {}

Reading FreeIpmiReader::read(const Stop& stop) {
  try {
    ::mkdir(cacheDirectory_.c_str(), S_IRWXU);  // the programs tell if it is not there then
    Reading reading{readSensors(stop), {}};
    if (frusAreDue()) {
      const TimePoint begun = clock_();
      frus_ = readFrus(stop);
      frusRead_ = begun;
    }
    reading.frus = frus_;
    return reading;
  } catch (const ReadError&) {
    frusRead_.reset();  // who knows what was exchanged meanwhile
    throw;
  }
}

bool FreeIpmiReader::frusAreDue() const {
  return !frusRead_ || clock_() - *frusRead_ >= controller_.fruInterval;
}

std::vector<std::string> FreeIpmiReader::command(const char* tool) const {
  std::vector<std::string> words = {
      toolDirectory_ + "/" + tool,
      "--quiet-cache",
      "--sdr-cache-recreate",
      "--sdr-cache-directory=" + cacheDirectory_,
      // The program's own limit comes first: it tells what was the matter.
      "--session-timeout=" + std::to_string(controller_.timeout.count() / 2),
  };
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) {
      words.push_back(option + value);
    }
  };
  add("--config-file=", controller_.accessFile);
  add("--driver-type=", controller_.driver);
  add("--driver-device=", controller_.device);
  add("--hostname=", controller_.host.empty() ? "" : address(controller_));
  return words;
}

std::map<std::string, std::string> FreeIpmiReader::readSensors(const Stop& stop) {
  constexpr const char* kTool = "ipmi-sensors";
  std::vector<std::string> words = command(kTool);
  words.insert(words.end(),
               {"--comma-separated-output", "--no-header-output", "--output-sensor-state"});
  const ToolResult result = runner_.run(words, stop);
  auto sensors = parseSensors(result.out);
  if (result.exitCode != 0 || sensors.empty()) {
    fail(kTool, result);
  }
  return sensors;
}

std::map<std::string, Fru> FreeIpmiReader::readFrus(const Stop& stop) {
  if (controller_.fruDevices.empty()) {
    return parseFrus(fruText({}, stop), controller_.airflow);
  }
  std::string all;
  for (const unsigned device : controller_.fruDevices) {
    all += fruText({"--device-id=" + std::to_string(device)}, stop);
  }
  return parseFrus(all, controller_.airflow);
}

std::string FreeIpmiReader::fruText(const std::vector<std::string>& further, const Stop& stop) {
  constexpr const char* kTool = "ipmi-fru";
  std::vector<std::string> words = command(kTool);
  words.insert(words.end(), further.begin(), further.end());
  ToolResult result = runner_.run(words, stop);
  if (result.exitCode != 0 && result.out.find(kAnyDevice) == std::string::npos) {
    fail(kTool, result);
  }
  return std::move(result.out);
}

}  // namespace IpmiPlugin
