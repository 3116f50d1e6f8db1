// SPDX-License-Identifier: Apache-2.0
#include "tools/Session.hpp"

#include <cstdio>

#include <fmt/format.h>

#include "pl/pl_system.h"
#include "smbus/service/board/BoardError.hpp"
#include "tools/Environment.hpp"
#include "tools/HostServices.hpp"
#include "tools/SlowNotice.hpp"
#include "tools/Status.hpp"

namespace Nimbo {

namespace {

constexpr std::chrono::milliseconds kPatience{1500};

std::string refusal(const Device& device) {
  return fmt::format("the library refused {}: {}", device.entry.name,
                     device.added.reason.empty() ? "it gave no reason" : device.added.reason);
}

Library load(const Options& options) {
  prepareEnvironment(options);
  return Library(libraryPath(options));
}

// A plug-in has no other way than a trace to say that it does nothing.
void loadOrExplain(const std::string& plugin) {
  trace().forget();
  const size_t before = trace().warnings();
  loadPlugin(plugin);
  if (trace().warnings() > before) {
    throw LibraryError(fmt::format("the plug-in {}: {}", plugin, trace().reason()));
  }
}

}  // namespace

Session::Session(const Options& options)
    : options_(options), board_(Board::load(boardPath(options))), library_(load(options)) {
  trace().printUpTo(options.traceLevel);
  for (const auto& plugins : {board_.plugins(), options.plugins}) {
    for (const std::string& plugin : plugins) {
      loadOrExplain(plugin);
    }
  }
  const std::string topology = board_.topology();
  const SlowNotice notice(
      "nimbo: no SMBus service yet; trying for up to 30 seconds (is smbusd running?)", kPatience);
  const Outcome started = attempt([&] {
    return library_.function<decltype(pl_system_init)>("pl_system_init")(topology.c_str());
  });
  if (!started.ok()) {
    throw LibraryError(fmt::format(
        "the driver library did not start ({}): {}{}", statusName(started.status), started.reason,
        options.live && started.status == PL_STATUS_FAILED
            ? "; start smbusd, or leave out --live for the simulated board"
            : ""));
  }
}

Entry Session::entry(const std::string& kind, const std::string& name) const {
  std::vector<std::string> names;
  for (const Entry& entry : board_.entries(kind)) {
    if (entry.name == name) {
      return entry;
    }
    names.push_back(entry.name);
  }
  throw UsageError(SmbusService::Board::unknownName("entry", name, names,
                                                    fmt::format(" among the board's {}", kind)));
}

std::vector<Device> Session::add(std::span<const Kind* const> kinds) const {
  std::vector<Device> devices;
  for (const Kind* kind : kinds) {
    for (const Entry& entry : board_.entries(kind->key)) {
      devices.push_back(addDevice(library_, board_, *kind, entry));
      if (devices.back().record == nullptr) {
        std::fprintf(stderr, "%s: %s\n", board_.place(entry).text().c_str(),
                     refusal(devices.back()).c_str());
      }
    }
  }
  return devices;
}

Device Session::add(const Kind& kind, const std::string& name) const {
  return add(kind, entry(kind.key, name));
}

Device Session::add(const Kind& kind, const Entry& entry) const {
  Device device = addDevice(library_, board_, kind, entry);
  if (device.record == nullptr) {
    throw Config::FileError(board_.place(device.entry), refusal(device));
  }
  return device;
}

Report Session::report(std::span<const Kind* const> kinds, std::span<const Device> devices) const {
  Report report{board_.name(), options_.live, "", {}};
  for (const Kind* kind : kinds) {
    Group group{kind, {}};
    for (const Device& device : devices) {
      if (device.kind == kind) {
        group.observations.push_back(observe(device));
      }
    }
    report.groups.push_back(std::move(group));
  }
  return report;
}

void Session::mentionWarnings() const {
  // Simulated chips hold some of their registers only; each of the others is a warning.
  if (options_.live && options_.traceLevel < 0 && trace().warnings() > 0) {
    std::fprintf(stderr, "nimbo: warnings of the library: %zu; --trace 0 prints them\n",
                 trace().warnings());
  }
}

}  // namespace Nimbo
