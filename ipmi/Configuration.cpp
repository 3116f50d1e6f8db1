// SPDX-License-Identifier: Apache-2.0
#include "ipmi/Configuration.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "config/JsonFile.hpp"
#include "config/JsonValue.hpp"
#include "embedded/kIpmiSchema.hpp"

namespace IpmiPlugin {

namespace {

using Config::member;
using rapidjson::Value;
using std::chrono::milliseconds;

constexpr const char* kToolDirectory = "/usr/sbin";
constexpr const char* kCacheDirectory = "/var/cache/nimbo-ipmi";
constexpr unsigned kPort = 623;
constexpr double kInterval = 5;
constexpr double kFruInterval = 60;
constexpr double kTimeout = 10;
constexpr double kStaleAfter = 30;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

std::string text(const Value& object, const char* key, const char* otherwise = "") {
  const Value* value = member(&object, key);
  return value != nullptr ? value->GetString() : otherwise;
}

milliseconds seconds(const Value& object, const char* key, double otherwise) {
  const Value* value = member(&object, key);
  return milliseconds(
      static_cast<int64_t>((value != nullptr ? value->GetDouble() : otherwise) * 1000));
}

std::vector<unsigned> numbers(const Value* list) {
  std::vector<unsigned> all;
  if (list != nullptr) {
    for (const Value& number : list->GetArray()) {
      all.push_back(number.GetUint());
    }
  }
  return all;
}

std::vector<AirflowMark> airflowMarks(const Value* marks) {
  if (marks == nullptr) {
    return {{"F2B", "frontToBackAirflow"},
            {"B2F", "backToFrontAirflow"},
            {"-F", "frontToBackAirflow"},
            {"-R", "backToFrontAirflow"}};
  }
  std::vector<AirflowMark> all;
  for (const auto& [mark, direction] : marks->GetObject()) {
    all.push_back({mark.GetString(), direction.GetString()});
  }
  return all;
}

Controller read(const std::string& name, const Value& node) {
  const Value* port = member(&node, "port");
  return {.name = name,
          .host = text(node, "host"),
          .port = static_cast<uint16_t>(port != nullptr ? port->GetUint() : kPort),
          .accessFile = text(node, "accessFile"),
          .driver = text(node, "driver", member(&node, "host") != nullptr ? "LAN_2_0" : ""),
          .device = text(node, "device"),
          .interval = seconds(node, "interval", kInterval),
          .fruInterval = seconds(node, "fruInterval", kFruInterval),
          .timeout = seconds(node, "timeout", kTimeout),
          .staleAfter = seconds(node, "staleAfter", kStaleAfter),
          .fruDevices = numbers(member(&node, "fruDevices")),
          .airflow = airflowMarks(member(&node, "airflow"))};
}

// The file holds a password.
void checkAccess(const Config::JsonFile& file, const std::string& place, const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    file.fail(place, path + " cannot be found: " + std::generic_category().message(errno));
  }
  if (!S_ISREG(status.st_mode) || (status.st_mode & kOthers) != 0) {
    file.fail(place, path +
                         " holds a password and must be a file of its owner's alone; make it so "
                         "with \"chmod 600\"");
  }
}

// What a schema cannot say.
void check(const Config::JsonFile& file, const std::string& place, const Controller& controller) {
  const bool remote = !controller.host.empty();
  if (remote && controller.accessFile.empty()) {
    file.fail(place, "\"host\" needs an \"accessFile\" with the user and the password");
  }
  if (remote != controller.driver.starts_with("LAN")) {
    file.fail(place, "the \"driver\" is LAN or LAN_2_0 with a \"host\", and another without one");
  }
  if (controller.staleAfter <= controller.interval) {
    file.fail(place,
              "\"staleAfter\" must be longer than \"interval\", or the values are always "
              "stale");
  }
  if (!controller.accessFile.empty()) {
    checkAccess(file, Config::pointerTo(place, "accessFile"), controller.accessFile);
  }
}

}  // namespace

Configuration loadConfiguration(const std::string& path) {
  const Config::JsonFile file = Config::JsonFile::load(path);
  file.validate(Embedded::kIpmiSchema);
  const Value& root = file.document();
  Configuration configuration{text(root, "toolDirectory", kToolDirectory),
                              text(root, "cacheDirectory", kCacheDirectory),
                              {}};
  for (const auto& [name, node] : root["controllers"].GetObject()) {
    configuration.controllers.push_back(read(name.GetString(), node));
    check(file, Config::pointerTo("/controllers", name.GetString()),
          configuration.controllers.back());
  }
  return configuration;
}

}  // namespace IpmiPlugin
