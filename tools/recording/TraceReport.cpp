// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/TraceReport.hpp"

#include <algorithm>

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "smbus/service/recording/Text.hpp"

namespace Nimbo {

namespace {

using SmbusService::Recording::fromWord;
using SmbusService::Recording::Gap;
using SmbusService::Recording::Record;
using SmbusService::Recording::toHex;
using SmbusService::Recording::toUtc;

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

double microseconds(std::chrono::nanoseconds duration) {
  return std::chrono::duration<double, std::micro>(duration).count();
}

std::string registerText(const DecodedAccess& access) {
  std::string text = access.hasRegister ? fmt::format(" 0x{:02x}", access.number) : "";
  return access.meaning.name.empty() ? text : text + " " + access.meaning.name;
}

std::string spaced(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += (text.empty() ? "" : " ") + toHex({&byte, 1});
  }
  return text;
}

std::string valueText(const DecodedAccess& access) {
  if (!access.data || access.data->empty()) {
    return "";
  }
  const Meaning& meaning = access.meaning;
  const std::string bytes = spaced(*access.data);
  if (meaning.value) {
    return fmt::format(": {:.6g} {} ({})", *meaning.value, meaning.unit, bytes);
  }
  if (meaning.text) {
    return fmt::format(": \"{}\"", *meaning.text);
  }
  std::string pins;
  for (const PinBank& bank : meaning.banks) {
    for (const std::string& pin : bank.set) {
      pins += (pins.empty() ? "" : " ") + pin;
    }
  }
  return meaning.banks.empty() ? ": " + bytes
                               : fmt::format(": {} ({})", bytes, pins.empty() ? "none" : pins);
}

std::string lineOf(const DecodedAccess& access) {
  std::string route;
  for (const std::string& hop : access.route) {
    route += hop + " > ";
  }
  return fmt::format("    {}{}  {}{}{}\n", route, access.label, access.operation,
                     registerText(access), valueText(access));
}

void put(Writer& writer, const char* key, const std::string& text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void put(Writer& writer, const char* key, const std::vector<std::string>& texts) {
  writer.Key(key);
  writer.StartArray();
  for (const std::string& text : texts) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  }
  writer.EndArray();
}

void put(Writer& writer, const char* key, uint64_t number) {
  writer.Key(key);
  writer.Uint64(number);
}

void put(Writer& writer, const char* key, double number) {
  writer.Key(key);
  writer.Double(number);
}

void put(Writer& writer, const Meaning& meaning) {
  if (!meaning.name.empty()) {
    put(writer, "name", meaning.name);
  }
  if (meaning.value) {
    put(writer, "value", *meaning.value);
    put(writer, "unit", meaning.unit);
  }
  if (meaning.text) {
    put(writer, "text", *meaning.text);
  }
  if (!meaning.banks.empty()) {
    writer.Key("pins");
    writer.StartObject();
    for (const PinBank& bank : meaning.banks) {
      put(writer, bank.registerName.c_str(), bank.set);
    }
    writer.EndObject();
  }
}

void put(Writer& writer, const DecodedAccess& access) {
  writer.StartObject();
  put(writer, "bus", access.bus);
  put(writer, "route", access.route);
  put(writer, "address", fmt::format("0x{:02x}", access.address));
  put(writer, "device", access.label);
  put(writer, "operation", access.operation);
  if (access.hasRegister) {
    put(writer, "register", fmt::format("0x{:02x}", access.number));
  }
  if (access.data) {
    put(writer, "data", toHex(*access.data));
  }
  put(writer, access.meaning);
  writer.EndObject();
}

std::string line(rapidjson::StringBuffer& buffer) {
  buffer.Put('\n');
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace

bool TraceFilter::wants(std::chrono::nanoseconds time) const {
  return (!since || time >= *since) && (!until || time < *until);
}

// The number behind "bus" and a blank is enough.
bool TraceFilter::wantsBus(const std::string& name) const {
  return bus.empty() || name == bus || name.ends_with(" bus " + bus);
}

bool TraceFilter::namesDevice(const DeviceMap& devices) const {
  constexpr uint64_t kMostAddress = 0x7F;
  const auto address = fromWord(device);
  return device.empty() || devices.has(device) || (address && *address <= kMostAddress);
}

bool TraceFilter::wants(const DecodedAccess& access) const {
  return wantsBus(access.bus) &&
         (device.empty() || access.label == device || fromWord(device) == access.address);
}

bool TraceFilter::wants(const Record& record, const std::vector<DecodedAccess>& accesses) const {
  const bool any = (bus.empty() && device.empty()) ||
                   std::ranges::any_of(accesses, [this](const auto& it) { return wants(it); });
  return any && (!failedOnly || record.response.failed()) && wants(record.begun.utc);
}

std::string textOf(const Record& record, const std::vector<DecodedAccess>& accesses) {
  std::string text = fmt::format(
      "{}  #{}  {:.1f} us  pid {} connection {}\n", toUtc(record.begun.utc), record.number,
      microseconds(record.duration), record.client.pid, record.client.connection);
  for (size_t i = 0; i < accesses.size(); ++i) {
    // What selects a channel is told with what goes through it, unless it is where it went wrong.
    if (!accesses[i].selects || record.failedRequest == i) {
      text += lineOf(accesses[i]);
    }
  }
  if (record.response.failed()) {
    text += fmt::format("    FAILED: {}\n", record.response.reason());
  }
  return text;
}

std::string textOf(const Gap& gap) {
  return fmt::format("{}  {} transactions are missing here\n", toUtc(gap.noticed.utc),
                     gap.transactions);
}

std::string jsonOf(const Record& record, const std::vector<DecodedAccess>& accesses) {
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.StartObject();
  put(writer, "time", toUtc(record.begun.utc));
  put(writer, "n", record.number);
  put(writer, "duration_us", microseconds(record.duration));
  put(writer, "pid", static_cast<uint64_t>(record.client.pid));
  put(writer, "connection", record.client.connection);
  writer.Key("accesses");
  writer.StartArray();
  for (const DecodedAccess& access : accesses) {
    put(writer, access);
  }
  writer.EndArray();
  if (record.response.failed()) {
    if (record.failedRequest) {
      put(writer, "failed", uint64_t{*record.failedRequest});
    }
    put(writer, "reason", record.response.reason());
  }
  writer.EndObject();
  return line(buffer);
}

std::string jsonOf(const Gap& gap) {
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.StartObject();
  put(writer, "time", toUtc(gap.noticed.utc));
  put(writer, "dropped", gap.transactions);
  writer.EndObject();
  return line(buffer);
}

}  // namespace Nimbo
