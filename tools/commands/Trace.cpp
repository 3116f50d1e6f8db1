// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "smbus/service/recording/RecordingReader.hpp"
#include "smbus/service/recording/Text.hpp"
#include "tools/Board.hpp"
#include "tools/Environment.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/recording/TraceReport.hpp"

namespace Nimbo {

namespace {

namespace Recording = SmbusService::Recording;

constexpr const char* kHelp = "Print a recording of the SMBus service, decoded";
constexpr const char* kDetails =
    "Devices are named by the board description. FILE.1, if there is one, holds what was recorded\n"
    "before; of several files the one that was begun first comes first. Lines that are damaged "
    "are\n"
    "told on standard error, with their place; the exit code is 3 then.\n"
    "\n"
    "  nimbo trace --device PSoC --failed /var/log/smbusd/recording*";

struct Arguments {
  std::vector<std::string> files;
  std::string since;
  std::string until;
  TraceFilter filter;
};

std::optional<std::chrono::nanoseconds> timeOf(const std::string& text) {
  const auto time = Recording::fromUtc(text);
  if (!text.empty() && !time) {
    throw UsageError(fmt::format(
        "\"{}\" is no time; give UTC as 2026-01-31, 2026-01-31T12:00:00 or with a fraction", text));
  }
  return time;
}

DeviceMap devicesOf(const Options& options) {
  rapidjson::Document topology;
  topology.Parse(Board::load(boardPath(options)).topology().c_str());
  return DeviceMap(topology);
}

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

class Printer {
 public:
  Printer(bool json, const TraceFilter& filter, DeviceMap devices)
      : json_(json), filter_(filter), decoder_(std::move(devices)) {}

  void operator()(const Recording::Record& record) {
    const std::vector<DecodedAccess> accesses = decoder_.decode(record);
    if (filter_.wants(record, accesses)) {
      print(json_ ? jsonOf(record, accesses) : textOf(record, accesses));
    }
  }
  void operator()(const Recording::Gap& gap) const {
    if (filter_.wants(gap.noticed.utc)) {
      print(json_ ? jsonOf(gap) : textOf(gap));
    }
  }

 private:
  const bool json_;
  const TraceFilter filter_;
  Decoder decoder_;
};

using Readers = std::vector<std::unique_ptr<Recording::RecordingReader>>;

// In the order in which they were begun.
Readers open(const std::vector<std::string>& files) {
  Readers readers;
  for (const std::string& file : files) {
    readers.push_back(std::make_unique<Recording::RecordingReader>(file));
  }
  std::ranges::stable_sort(readers, {},
                           [](const auto& reader) { return reader->header().begun.utc; });
  return readers;
}

// A name that nothing has would print nothing, as if all were well.
void requireNames(const TraceFilter& filter, const DeviceMap& devices, const Readers& readers) {
  if (!filter.namesDevice(devices)) {
    throw UsageError(fmt::format(
        "the board has no device \"{}\"; give a label of its topology, or an address like 0x4e",
        filter.device));
  }
  std::set<std::string> buses;
  for (const auto& reader : readers) {
    for (const SmbusService::BusKey& bus : reader->header().buses) {
      buses.insert(SmbusService::describe(bus));
    }
  }
  if (std::ranges::none_of(buses, [&](const auto& bus) { return filter.wantsBus(bus); })) {
    throw UsageError(fmt::format("there is no bus \"{}\" in the recording; it has \"{}\"",
                                 filter.bus, fmt::join(buses, "\", \"")));
  }
}

ExitCode print(Recording::RecordingReader& reader, Printer& printer) {
  ExitCode code = kAllFine;
  Recording::Line line;
  while (std::ferror(stdout) == 0 && reader.next(line)) {
    if (const auto* damage = std::get_if<Recording::Damage>(&line)) {
      std::fprintf(stderr, "%s: %s\n", reader.place(*damage).text().c_str(),
                   damage->message.c_str());
      code = kDeviceFailed;
    } else if (const auto* gap = std::get_if<Recording::Gap>(&line)) {
      printer(*gap);
    } else {
      printer(std::get<Recording::Record>(line));
    }
  }
  return code;
}

ExitCode run(const Options& options, const Arguments& arguments) {
  TraceFilter filter = arguments.filter;
  filter.since = timeOf(arguments.since);
  filter.until = timeOf(arguments.until);
  DeviceMap devices = devicesOf(options);
  const Readers readers = open(arguments.files);
  requireNames(filter, devices, readers);
  Printer printer(options.json, filter, std::move(devices));
  ExitCode code = kAllFine;
  for (const auto& reader : readers) {
    code = std::max(code, print(*reader, printer));
  }
  return code;
}

}  // namespace

void addTraceCommand(CLI::App& app, const Options& options, Run& result) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("trace", kHelp)->footer(kDetails);
  command->add_option("FILE", arguments->files, "The recording, in one file or several")
      ->required();
  command->add_option("--bus", arguments->filter.bus, "Only this bus: its name, or its number");
  command->add_option("--device", arguments->filter.device,
                      "Only this device: its label, or its address (0x4e)");
  command->add_flag("--failed", arguments->filter.failedOnly, "Only transactions that failed");
  command->add_option("--since", arguments->since, "Only from this time on (UTC)");
  command->add_option("--until", arguments->until, "Only before this time (UTC)");
  command->callback([&options, &result, arguments] {
    result = [&options, arguments] { return run(options, *arguments); };
  });
}

}  // namespace Nimbo
