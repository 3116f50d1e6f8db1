// SPDX-License-Identifier: Apache-2.0
#include "ipmi/ToolOutput.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

namespace IpmiPlugin {

namespace {

constexpr std::string_view kNone = "N/A";

std::string upperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

// Calls take(line) for each line.
template <class Take>
void forEachLine(std::string_view text, Take take) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    take(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

// Cuts the last of the comma-separated fields off a line; nothing when there is but one.
std::optional<std::string_view> cutLast(std::string_view& line) {
  const size_t comma = line.rfind(',');
  if (comma == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view field = line.substr(comma + 1);
  line = line.substr(0, comma);
  return field;
}

// The events are quoted and may contain commas, as may the name.
std::optional<std::string_view> cutEvents(std::string_view& line) {
  const size_t quoted = line.find(",'");
  if (quoted == std::string_view::npos) {
    return cutLast(line);
  }
  const std::string_view events = line.substr(quoted + 1);
  line = line.substr(0, quoted);
  return events;
}

struct SensorLine {
  std::string_view name;
  std::string_view type;
  std::string_view state;
  std::string_view reading;
  std::string_view events;
};

std::optional<SensorLine> splitSensor(std::string_view line) {
  const auto events = cutEvents(line);
  const auto units = cutLast(line);
  const auto reading = cutLast(line);
  const auto state = cutLast(line);
  const auto type = cutLast(line);
  const size_t id = line.find(',');
  if (!events || !units || !reading || !state || !type || id == std::string_view::npos) {
    return std::nullopt;
  }
  return SensorLine{line.substr(id + 1), *type, *state, *reading, *events};
}

constexpr std::array<std::string_view, 4> kAbsences = {
    "Entity Absent",
    "Device Removed/Device Absent",
    "Slot is Empty",
    "FRU Not Installed",
};

// Types whose sensors say with a state that their device is there; without one it is not.
constexpr std::array<std::string_view, 2> kPresenceTypes = {"Entity Presence", "Power Supply"};
constexpr std::string_view kNoState = "'OK'";

bool saysAbsent(const SensorLine& sensor) {
  const bool stateless = sensor.events == kNoState &&
                         std::ranges::find(kPresenceTypes, sensor.type) != kPresenceTypes.end();
  return stateless || std::ranges::any_of(kAbsences, [&](std::string_view absence) {
           return sensor.events.find(absence) != std::string_view::npos;
         });
}

std::optional<std::string> valueOf(const SensorLine& sensor) {
  if (sensor.reading != kNone) {
    return std::string(sensor.reading);
  }
  if (sensor.state == kNone || saysAbsent(sensor)) {
    return std::nullopt;
  }
  return sensor.state == "Critical" ? "0" : "1";
}

// What a record says, by the label in front of it.
using Labelled = std::multimap<std::string_view, std::string_view>;

constexpr std::string_view kPart = "FRU Product Part/Model Number";
constexpr std::array<std::string_view, 4> kModelLabels = {
    kPart,
    "FRU Product Name",
    "FRU Board Part Number",
    "FRU Board Product Name",
};
constexpr std::array<std::string_view, 2> kSerialLabels = {
    "FRU Product Serial Number",
    "FRU Board Serial Number",
};
constexpr std::array<std::string_view, 3> kAirflowLabels = {
    kPart,
    "FRU Product Custom Info",
    "FRU Board Custom Info",
};

template <size_t size>
std::string firstOf(const Labelled& fields, const std::array<std::string_view, size>& labels) {
  for (const std::string_view label : labels) {
    if (const auto it = fields.find(label); it != fields.end()) {
      return std::string(it->second);
    }
  }
  return "";
}

std::string airflowOf(const Labelled& fields, const std::vector<AirflowMark>& marks) {
  for (const std::string_view label : kAirflowLabels) {
    const auto [begin, end] = fields.equal_range(label);
    for (auto field = begin; field != end; ++field) {
      for (const AirflowMark& mark : marks) {
        if (field->second.ends_with(mark.mark)) {
          return mark.direction;
        }
      }
    }
  }
  return "";
}

// "FRU Inventory Device: PSU1 (ID 01h)" gives "PSU1".
std::optional<std::string_view> deviceName(std::string_view line) {
  constexpr std::string_view kBefore = "FRU Inventory Device: ";
  const size_t end = line.rfind(" (ID ");
  if (!line.starts_with(kBefore) || end == std::string_view::npos || end < kBefore.size()) {
    return std::nullopt;
  }
  return line.substr(kBefore.size(), end - kBefore.size());
}

// "  FRU Product Name: X"; an error stands in the same form and is no field of a record.
void addField(std::string_view line, Labelled& fields) {
  const size_t colon = line.find(": ");
  if (line.starts_with("  FRU ") && colon != std::string_view::npos &&
      !line.starts_with("  FRU Error")) {
    fields.emplace(line.substr(2, colon - 2), line.substr(colon + 2));
  }
}

}  // namespace

std::map<std::string, std::string> parseSensors(std::string_view text) {
  std::map<std::string, std::string> sensors;
  forEachLine(text, [&](std::string_view line) {
    if (const auto sensor = splitSensor(line)) {
      if (auto value = valueOf(*sensor)) {
        sensors[upperCase(sensor->name)] = std::move(*value);
      }
    }
  });
  return sensors;
}

std::map<std::string, Fru> parseFrus(std::string_view text, const std::vector<AirflowMark>& marks) {
  std::map<std::string, Labelled> devices;
  Labelled before;  // lines before the first device belong to none
  Labelled* current = &before;
  forEachLine(text, [&](std::string_view line) {
    if (const auto name = deviceName(line)) {
      current = &devices[upperCase(*name)];
    } else {
      addField(line, *current);
    }
  });
  std::map<std::string, Fru> frus;
  for (const auto& [name, fields] : devices) {
    if (!fields.empty()) {
      frus[name] = {firstOf(fields, kModelLabels), firstOf(fields, kSerialLabels),
                    airflowOf(fields, marks)};
    }
  }
  return frus;
}

}  // namespace IpmiPlugin
