// SPDX-License-Identifier: Apache-2.0
#include "smbus/client/Settings.hpp"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace PlatformLibrary {

namespace {

constexpr const char* kDefaultPath = "/run/nimbo/smbus.sock";
constexpr std::chrono::seconds kDefaultTimeout{30};

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::string servicePath() {
  const std::string_view path = variable("NIMBO_SMBUS_SOCKET");
  return std::string(path.empty() ? kDefaultPath : path);
}

std::chrono::milliseconds callTimeout() {
  const std::string_view text = variable("NIMBO_SMBUS_TIMEOUT_MS");
  const char* end = text.data() + text.size();
  int milliseconds = 0;
  const auto [rest, error] = std::from_chars(text.data(), end, milliseconds);
  const bool valid = error == std::errc() && rest == end && milliseconds > 0;
  return valid ? std::chrono::milliseconds(milliseconds) : kDefaultTimeout;
}

bool inSimulation() { return std::getenv("SIMULATION_VMID") != nullptr; }

}  // namespace PlatformLibrary
