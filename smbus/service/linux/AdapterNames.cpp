// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/AdapterNames.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <charconv>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace SmbusService {

namespace {

std::optional<uint32_t> adapterNumber(const std::string& entry) {
  constexpr std::string_view kPrefix = "i2c-";
  uint32_t number = 0;
  const char* end = entry.data() + entry.size();
  if (!entry.starts_with(kPrefix)) {
    return std::nullopt;
  }
  const auto parsed = std::from_chars(entry.data() + kPrefix.size(), end, number);
  return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

std::string listOf(const std::map<uint32_t, std::string>& adapters) {
  std::vector<std::string> entries;
  for (const auto& [number, name] : adapters) {
    entries.push_back(fmt::format("{} \"{}\"", number, name));
  }
  return entries.empty() ? "none" : fmt::format("{}", fmt::join(entries, ", "));
}

}  // namespace

std::map<uint32_t, std::string> adapterNames(const std::filesystem::path& devices) {
  std::map<uint32_t, std::string> names;
  std::error_code unreadable;
  for (const auto& entry : std::filesystem::directory_iterator(devices, unreadable)) {
    std::string name;
    const auto number = adapterNumber(entry.path().filename().string());
    if (number && std::getline(std::ifstream(entry.path() / "name"), name)) {
      names[*number] = name;
    }
  }
  return names;
}

uint32_t adapterNamed(const std::string& name, const std::map<uint32_t, std::string>& adapters) {
  std::vector<uint32_t> found;
  for (const auto& [number, adapter] : adapters) {
    if (adapter == name) {
      found.push_back(number);
    }
  }
  if (found.empty()) {
    throw std::runtime_error(
        fmt::format("there is no i2c adapter named \"{}\"; there are: {}", name, listOf(adapters)));
  }
  if (found.size() > 1) {
    throw std::runtime_error(fmt::format(
        "the i2c adapters {} are all named \"{}\"; give the number", fmt::join(found, ", "), name));
  }
  return found.front();
}

}  // namespace SmbusService
