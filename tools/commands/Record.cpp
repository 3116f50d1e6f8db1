// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include "config/File.hpp"
#include "config/JsonValue.hpp"
#include "pl/pl_smbus.h"
#include "tools/Session.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/recording/BoardSnapshot.hpp"

namespace Nimbo {

namespace {

using rapidjson::Value;

constexpr const char* kHelp = "Keep what the registers of a live board hold, for a virtual board";
constexpr const char* kDetails =
    "Reads the registers of every device of the topology, writes to none but the muxes on the "
    "way,\n"
    "and writes FILE, which smbusd takes for its \"virtual_board\". What reading would change, "
    "and\n"
    "PMBus devices, are left out.\n"
    "\n"
    "  nimbo --live record board-today.json";

// Anything that the library says about registers that are not there is expected.
class LiveRegisters : public RegisterSource {
 public:
  explicit LiveRegisters(pl_smbus* device) : device_(device) {}

  std::optional<uint8_t> byte(uint8_t number) override {
    unsigned char value = 0;
    return read([&] { return call(device_, &pl_smbus_ops::read_byte, number, &value); })
               ? std::optional<uint8_t>(value)
               : std::nullopt;
  }
  std::optional<uint16_t> word(uint8_t number) override {
    unsigned short value = 0;
    return read([&] { return call(device_, &pl_smbus_ops::read_word, number, &value); })
               ? std::optional<uint16_t>(value)
               : std::nullopt;
  }

 private:
  static bool read(const std::function<pl_status()>& call) { return attempt(call).ok(); }

  pl_smbus* const device_;
};

// Whatever its driver, its registers are asked for.
std::string proxyDescription(const Value& device) {
  rapidjson::Document description;
  auto& allocator = description.GetAllocator();
  description.SetObject();
  description.AddMember("did", device["did"].GetUint(), allocator);
  description.AddMember("driver", "SmbusProxyDriver", allocator);
  description.AddMember("address", Value(device["address"], allocator), allocator);
  return Config::jsonText(description);
}

std::unique_ptr<RegisterSource> open(const Session& session, const Value& device) {
  pl_smbus* record = nullptr;
  const std::string description = proxyDescription(device);
  (void)attempt([&] {
    record =
        session.library().function<decltype(pl_smbus_add)>("pl_smbus_add")(description.c_str(), 0);
    return PL_STATUS_OK;
  });
  return record == nullptr ? nullptr : std::make_unique<LiveRegisters>(record);
}

// Muxes have no registers of their own; what they lead to is told with the devices.
ExitCode tell(const std::vector<SnapshotOutcome>& outcomes) {
  bool any = false;
  for (const SnapshotOutcome& outcome : outcomes) {
    if (!outcome.remark.empty()) {
      std::fprintf(stderr, "nimbo: %s: %s\n", outcome.label.c_str(), outcome.remark.c_str());
    } else if (outcome.registers > 0) {
      std::printf("%s: %zu registers\n", outcome.label.c_str(), outcome.registers);
      any = true;
    }
  }
  return any ? kAllFine : kDeviceFailed;
}

ExitCode run(const Options& options, const std::string& path) {
  if (!options.live) {
    throw UsageError("record reads a live board; ask for it with --live");
  }
  const Session session(options);
  rapidjson::Document topology;
  topology.Parse(session.board().topology().c_str());
  BoardSnapshot snapshot([&](const Value& device) { return open(session, device); });
  Config::writeFile(path, snapshot.take(session.board().name(), topology));
  return tell(snapshot.outcomes());
}

}  // namespace

void addRecordCommand(CLI::App& app, const Options& options, Run& result) {
  const auto path = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("record", kHelp)->footer(kDetails);
  command->add_option("FILE", *path, "The virtual board's file to write")->required();
  command->callback(
      [&options, &result, path] { result = [&options, path] { return run(options, *path); }; });
}

}  // namespace Nimbo
