// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.hpp"

#include <algorithm>

#include <fmt/format.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "tools/Panel.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

constexpr const char* kNothing = "-";
constexpr int kDecimals = 3;  // of numbers in JSON

const char* mode(const Report& report) { return report.live ? "live" : "simulation"; }

// Values as text for a table.
struct ToText {
  const Column& column;

  std::string operator()(std::monostate) const { return kNothing; }
  std::string operator()(bool value) const { return value ? "yes" : "no"; }
  std::string operator()(const std::string& value) const { return value; }
  std::string operator()(double value) const {
    return fmt::format("{:.{}f}{}{}", value, column.decimals, *column.unit == '\0' ? "" : " ",
                       column.unit);
  }
};

Table::Align alignOf(const Value& value) {
  return std::holds_alternative<std::string>(value) ? Table::Align::kLeft : Table::Align::kRight;
}

// A column is aligned as the first value that it holds.
Table::Align alignOf(const Group& group, size_t column) {
  for (const Observation& observation : group.observations) {
    if (column < observation.readings.size() && observation.readings[column].value.index() != 0) {
      return alignOf(observation.readings[column].value);
    }
  }
  return Table::Align::kRight;
}

std::string statusText(const Observation& observation) {
  const std::string word = observation.verdict().word;
  const Outcome& outcome = observation.outcome;
  // A fault is the device's own answer; any other failure needs its reason.
  const bool explained =
      outcome.failed() && outcome.status != PL_STATUS_FAULT && !outcome.reason.empty();
  return explained ? word + ": " + outcome.reason : word;
}

void addObservation(const Observation& observation, Table& table) {
  const Kind& kind = *observation.device->kind;
  table.addRow();
  table.addCell(observation.device->entry.name);
  for (size_t i = 0; i < kind.columns.size(); ++i) {
    const Value value = i < observation.readings.size() ? observation.readings[i].value : Value{};
    table.addCell(valueText(kind.columns[i], value));
  }
  table.addCell(statusText(observation), healthColour(observation.verdict().health));
}

std::string tableOf(const Group& group, bool colours) {
  Table table;
  table.addColumn("NAME");
  for (size_t i = 0; i < group.kind->columns.size(); ++i) {
    table.addColumn(group.kind->columns[i].heading, alignOf(group, i));
  }
  table.addColumn("STATUS");
  for (const Observation& observation : group.observations) {
    addObservation(observation, table);
  }
  return table.text(colours);
}

template <typename Writer>
struct ToJson {
  Writer& writer;

  void operator()(std::monostate) const { writer.Null(); }
  void operator()(bool value) const { writer.Bool(value); }
  void operator()(const std::string& value) const { writer.String(value.c_str()); }
  void operator()(double value) const {
    if (value == static_cast<double>(static_cast<int64_t>(value))) {
      writer.Int64(static_cast<int64_t>(value));
    } else {
      writer.Double(value);
    }
  }
};

template <typename Writer>
void member(Writer& writer, const char* key, const std::string& text) {
  writer.Key(key);
  writer.String(text.c_str());
}

template <typename Writer>
void writeObservation(Writer& writer, const Observation& observation) {
  const Kind& kind = *observation.device->kind;
  writer.StartObject();
  member(writer, "name", observation.device->entry.name);
  member(writer, "status", observation.status());
  member(writer, "condition", observation.verdict().word);
  if (!observation.outcome.ok()) {
    member(writer, "reason", observation.outcome.reason);
  }
  for (size_t i = 0; i < kind.columns.size(); ++i) {
    writer.Key(kind.columns[i].key);
    std::visit(ToJson<Writer>{writer},
               i < observation.readings.size() ? observation.readings[i].value : Value{});
  }
  writer.EndObject();
}

template <typename Writer>
void write(Writer& writer, const Report& report) {
  writer.SetMaxDecimalPlaces(kDecimals);
  writer.StartObject();
  member(writer, "board", report.board);
  member(writer, "mode", mode(report));
  if (!report.time.empty()) {
    member(writer, "time", report.time);
  }
  for (const Group& group : report.groups) {
    writer.Key(group.kind->key);
    writer.StartArray();
    for (const Observation& observation : group.observations) {
      writeObservation(writer, observation);
    }
    writer.EndArray();
  }
  writer.EndObject();
}

}  // namespace

bool Report::failed() const {
  return std::any_of(groups.begin(), groups.end(), [](const Group& group) {
    return std::any_of(group.observations.begin(), group.observations.end(),
                       [](const Observation& seen) { return seen.outcome.failed(); });
  });
}

std::string valueText(const Column& column, const Value& value) {
  return std::visit(ToText{column}, value);
}

Colour healthColour(Health health) {
  static constexpr Colour kColours[] = {Colour::kGreen, Colour::kYellow, Colour::kRed};
  return kColours[static_cast<size_t>(health)];
}

std::string tables(const Report& report, const Style& style) {
  std::string text = fmt::format("{} ({}){}{}\n", report.board, mode(report),
                                 report.time.empty() ? "" : " at ", report.time);
  for (const Group& group : report.groups) {
    if (!group.observations.empty()) {
      const bool picture = style.panel && group.kind == &kXcvrs;
      text += "\n" + coloured(group.kind->title, style.colours ? Colour::kBold : Colour::kNone) +
              "\n" + (picture ? panelPicture(group, style) : tableOf(group, style.colours));
    }
  }
  return text;
}

std::string json(const Report& report, JsonStyle style) {
  rapidjson::StringBuffer buffer;
  if (style == JsonStyle::kLine) {
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    write(writer, report);
  } else {
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.SetIndent(' ', 2);
    write(writer, report);
  }
  return std::string(buffer.GetString()) + "\n";
}

}  // namespace Nimbo
