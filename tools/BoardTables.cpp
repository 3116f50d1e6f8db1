// SPDX-License-Identifier: Apache-2.0
#include "tools/BoardTables.hpp"

#include <fmt/format.h>

#include "tools/Table.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;
using Align = Table::Align;

std::string text(const Value& object, const char* key) {
  const auto found = object.FindMember(key);
  if (found == object.MemberEnd()) {
    return "";
  }
  const Value& value = found->value;
  if (value.IsString()) {
    return value.GetString();
  }
  return value.IsUint64() ? std::to_string(value.GetUint64())
                          : fmt::format("{:.6g}", value.GetDouble());
}

Value::ConstArray list(const Value& object, const char* key) { return object[key].GetArray(); }

Table tableOf(std::initializer_list<std::pair<const char*, Align>> columns) {
  Table table;
  for (const auto& [heading, align] : columns) {
    table.addColumn(heading, align);
  }
  return table;
}

std::string section(const char* title, const std::string& text, bool colours) {
  return (colours ? coloured(title, Colour::kBold) : title) + "\n" + text + "\n";
}

std::string chips(const Value& answer, bool colours) {
  Table table = tableOf({{"CHIP", Align::kLeft},
                         {"MODEL", Align::kLeft},
                         {"ADDRESS", Align::kLeft},
                         {"BUS", Align::kLeft},
                         {"BEHIND", Align::kLeft}});
  for (const Value& chip : list(answer, "chips")) {
    table.addRow();
    table.addCell(text(chip, "label"));
    table.addCell(text(chip, "model"));
    table.addCell(fmt::format("0x{:02x}", chip["address"].GetUint()));
    table.addCell(text(chip, "bus"));
    table.addCell(text(chip, "path"));
  }
  return section("Chips", table.text(colours), colours);
}

std::string quantities(const Value& answer, bool colours) {
  Table table = tableOf({{"QUANTITY", Align::kLeft},
                         {"VALUE", Align::kRight},
                         {"UNIT", Align::kLeft},
                         {"", Align::kLeft}});
  bool any = false;
  for (const Value& chip : list(answer, "chips")) {
    for (const Value& quantity : list(chip, "quantities")) {
      any = true;
      table.addRow();
      table.addCell(text(chip, "label") + "." + text(quantity, "name"));
      table.addCell(text(quantity, "value"));
      table.addCell(text(quantity, "unit"));
      table.addCell(quantity["can_be_set"].GetBool() ? "can be set" : "");
    }
  }
  return any ? section("Quantities", table.text(colours), colours) : "";
}

std::string wires(const Value& answer, bool colours) {
  Table table = tableOf({{"WIRE", Align::kLeft}, {"LEVEL", Align::kLeft}, {"PINS", Align::kLeft}});
  for (const Value& wire : list(answer, "wires")) {
    std::string pins;
    for (const Value& pin : list(wire, "pins")) {
      pins += (pins.empty() ? "" : " ") + std::string(pin.GetString());
    }
    table.addRow();
    table.addCell(text(wire, "name"));
    table.addCell(wire["level"].GetBool() ? "high" : "low");
    table.addCell(pins);
  }
  return list(answer, "wires").Empty() ? "" : section("Wires", table.text(colours), colours);
}

std::string events(const Value& answer, bool colours) {
  Table table = tableOf({{"EVENT", Align::kLeft}});
  for (const Value& event : list(answer, "events")) {
    table.addRow();
    table.addCell(event.GetString());
  }
  return list(answer, "events").Empty() ? "" : section("Events", table.text(colours), colours);
}

std::string scenario(const Value& answer, bool colours) {
  const auto found = answer.FindMember("scenario");
  if (found == answer.MemberEnd()) {
    return "";
  }
  const Value& progress = found->value;
  return section(
      "Scenario",
      fmt::format("{}: {}, {} of {} steps done, {} of them in vain\n", text(progress, "name"),
                  progress["running"].GetBool() ? "running" : "over", text(progress, "done"),
                  text(progress, "steps"), text(progress, "failed")),
      colours);
}

// The options of a fault as they are given on the command line.
std::string faultOptions(const Value& fault) {
  std::string options;
  for (const char* key : {"nth", "count", "bytes", "ms", "fan"}) {
    if (fault.HasMember(key)) {
      options += fmt::format("{}--{} {}", options.empty() ? "" : " ", key, text(fault, key));
    }
  }
  return options;
}

void addCount(Table& table, const Value& count) {
  table.addCell(text(count, "transfers"));
  table.addCell(text(count, "failed"));
  table.addCell(text(count, "bits"));
  table.addCell(fmt::format("{:.6f}", count["seconds"].GetDouble()));
}

void addKinds(Table& table, const std::string& bus, const std::string& chip, const Value& counts) {
  for (const Value& kind : list(counts, "kinds")) {
    table.addRow();
    table.addCell(bus);
    table.addCell(chip);
    table.addCell(text(kind, "kind"));
    addCount(table, kind);
  }
}

}  // namespace

std::string boardText(const Value& answer, bool colours) {
  return chips(answer, colours) + quantities(answer, colours) + wires(answer, colours) +
         events(answer, colours) + scenario(answer, colours) +
         section("Faults", faultsText(answer, colours), colours);
}

std::string faultsText(const Value& answer, bool colours) {
  if (list(answer, "faults").Empty()) {
    return "no fault is in force\n";
  }
  Table table = tableOf({{"ID", Align::kRight},
                         {"TARGET", Align::kLeft},
                         {"KIND", Align::kLeft},
                         {"OPTIONS", Align::kLeft},
                         {"ACCESSES", Align::kRight},
                         {"STRIKES", Align::kRight},
                         {"LEFT", Align::kRight}});
  for (const Value& fault : list(answer, "faults")) {
    table.addRow();
    for (const char* key : {"id", "target", "kind"}) {
      table.addCell(text(fault, key));
    }
    table.addCell(faultOptions(fault));
    table.addCell(text(fault, "accesses"));
    table.addCell(text(fault, "strikes"));
    table.addCell(fault.HasMember("left_ms")
                      ? fmt::format("{:.1f} s", fault["left_ms"].GetDouble() / 1000)
                      : "");
  }
  return table.text(colours);
}

std::string busesText(const Value& answer, bool colours) {
  Table table = tableOf({{"BUS", Align::kLeft},
                         {"CLOCK", Align::kRight},
                         {"TIME-OUT", Align::kRight},
                         {"WAITS", Align::kLeft},
                         {"TRANSFERS", Align::kRight},
                         {"FAILED", Align::kRight},
                         {"BITS", Align::kRight},
                         {"SECONDS", Align::kRight}});
  for (const Value& bus : list(answer, "buses")) {
    table.addRow();
    table.addCell(text(bus, "name"));
    table.addCell(text(bus, "clock_hz") + " Hz");
    table.addCell(text(bus, "timeout_ms") + " ms");
    table.addCell(bus["waits"].GetBool() ? "yes" : "no");
    addCount(table, bus);
  }
  return table.text(colours);
}

std::string busTimeText(const Value& answer, bool colours) {
  Table table = tableOf({{"BUS", Align::kLeft},
                         {"CHIP", Align::kLeft},
                         {"KIND", Align::kLeft},
                         {"TRANSFERS", Align::kRight},
                         {"FAILED", Align::kRight},
                         {"BITS", Align::kRight},
                         {"SECONDS", Align::kRight}});
  for (const Value& bus : list(answer, "buses")) {
    const std::string name = text(bus, "name");
    table.addRow();
    table.addCell(name);
    table.addCell("(all)");
    table.addCell("(all)");
    addCount(table, bus);
    addKinds(table, name, "(all)", bus);
    for (const Value& chip : list(bus, "chips")) {
      addKinds(table, name, text(chip, "label"), chip);
    }
    if (bus["unanswered"]["transfers"].GetUint64() > 0) {
      table.addRow();
      table.addCell(name);
      table.addCell("(no chip)");
      table.addCell("(all)");
      addCount(table, bus["unanswered"]);
    }
  }
  return table.text(colours);
}

std::string transfersText(const Value& answer, bool colours) {
  Table table = tableOf({{"BUS", Align::kLeft},
                         {"N", Align::kRight},
                         {"AT", Align::kRight},
                         {"CHIP", Align::kLeft},
                         {"ADDRESS", Align::kLeft},
                         {"KIND", Align::kLeft},
                         {"BITS", Align::kRight},
                         {"SECONDS", Align::kRight},
                         {"FAILED", Align::kLeft}});
  for (const Value& bus : list(answer, "buses")) {
    for (const Value& transfer : list(bus, "transfers")) {
      table.addRow();
      table.addCell(text(bus, "name"));
      table.addCell(text(transfer, "n"));
      table.addCell(fmt::format("{:.6f}", transfer["at"].GetDouble()));
      table.addCell(text(transfer, "chip"));
      table.addCell(fmt::format("0x{:02x}", transfer["address"].GetUint()));
      table.addCell(text(transfer, "kind"));
      table.addCell(text(transfer, "bits"));
      table.addCell(fmt::format("{:.6f}", transfer["seconds"].GetDouble()));
      table.addCell(text(transfer, "failed"));
    }
  }
  return table.text(colours);
}

std::string valueText(const Value& answer, bool /*colours*/) {
  const auto bits = answer.FindMember("bits");
  if (bits == answer.MemberEnd()) {
    return text(answer, "value") + "\n";
  }
  const unsigned digits = (bits->value.GetUint() + 3) / 4;
  return fmt::format("0x{:0{}x}\n", answer["value"].GetUint(), digits);
}

}  // namespace Nimbo
