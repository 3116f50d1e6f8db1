// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Configuration.hpp"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "embedded/kSmbusdSchema.hpp"

namespace SmbusService {

namespace {

using rapidjson::Value;

constexpr const char* kDefaultSocket = "/run/nimbo/smbus.sock";

std::string defaultSocketPath() {
  const char* path = std::getenv("NIMBO_SMBUS_SOCKET");
  return path != nullptr ? path : kDefaultSocket;
}

// Null when the key is absent.
const Value* member(const Value& object, const char* key) {
  const auto found = object.FindMember(key);
  return found == object.MemberEnd() ? nullptr : &found->value;
}

uint32_t number(const Value& object, const char* key, uint32_t otherwise) {
  const Value* value = member(object, key);
  return value == nullptr ? otherwise : value->GetUint();
}

std::string text(const Value& object, const char* key, const std::string& otherwise) {
  const Value* value = member(object, key);
  return value == nullptr ? otherwise : value->GetString();
}

SocketSettings readSocket(const Value* socket, const std::string& path) {
  const Value empty(rapidjson::kObjectType);
  const Value& object = socket == nullptr ? empty : *socket;
  SocketSettings settings;
  settings.path = text(object, "path", path);
  settings.mode = static_cast<mode_t>(std::stoul(text(object, "mode", "0660"), nullptr, 8));
  settings.group = text(object, "group", "");
  return settings;
}

Limits readLimits(const Value* object) {
  Limits limits;
  for (const LimitRow& row : limitTable()) {
    if (object != nullptr) {
      limits.*row.value = number(*object, row.key, limits.*row.value);
    }
  }
  return limits;
}

uint32_t readController(const Value* value) {
  if (value == nullptr) {
    return 0;
  }
  return value->IsString() ? static_cast<uint32_t>(std::stoul(value->GetString(), nullptr, 16))
                           : value->GetUint();
}

BusKey readKey(const Value& object) {
  BusKey key;
  Smbus::MasterType_Parse(object["master"].GetString(), &key.master);
  key.controller = readController(member(object, "controller"));
  key.accelerator = number(object, "accelerator", 0);
  key.bus = object["bus"].GetUint();
  return key;
}

std::variant<LinuxBackEnd, VirtualBackEnd> readBackEnd(const Value& object) {
  if (const Value* bus = member(object, "virtual")) {
    return VirtualBackEnd{bus->GetString()};
  }
  const Value& adapter = object["linux"];
  return adapter.IsString() ? LinuxBackEnd{adapter.GetString()} : LinuxBackEnd{adapter.GetUint()};
}

// A path in the file is relative to the file.
std::string besideFile(const Config::JsonFile& file, const std::string& path) {
  return path.empty() ? path : (std::filesystem::path(file.name()).parent_path() / path).string();
}

void requireVirtualBoard(const Config::JsonFile& file, const Configuration& configuration) {
  for (const BusEntry& bus : configuration.buses) {
    if (std::holds_alternative<VirtualBackEnd>(bus.backEnd) && configuration.virtualBoard.empty()) {
      file.fail(bus.pointer,
                "a virtual bus needs a virtual board; name its file in \"virtual_board\"");
    }
  }
}

std::vector<BusEntry> readBuses(const Config::JsonFile& file, const Value& array) {
  std::vector<BusEntry> buses;
  std::map<BusKey, std::string> places;
  for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
    const std::string pointer = Config::pointerTo("/buses", size_t{i});
    const BusKey key = readKey(array[i]);
    const auto [first, added] = places.emplace(key, pointer);
    if (!added) {
      file.fail(pointer,
                fmt::format("{} stands here a second time, first at {}; give each bus once",
                            describe(key), file.placeOf(first->second).text()));
    }
    buses.push_back({key, readBackEnd(array[i]["backend"]), Config::pointerTo(pointer, "backend")});
  }
  return buses;
}

}  // namespace

std::string_view configurationSchema() { return Embedded::kSmbusdSchema; }

Configuration defaultConfiguration() {
  Configuration configuration;
  configuration.socket.path = defaultSocketPath();
  return configuration;
}

Configuration readConfiguration(const Config::JsonFile& file) {
  file.validate(configurationSchema());
  const Value& document = file.document();
  Configuration configuration;
  configuration.socket = readSocket(member(document, "socket"), defaultSocketPath());
  configuration.control = readSocket(member(document, "control"), "");
  configuration.limits = readLimits(member(document, "limits"));
  configuration.retries = number(document, "retries", 0);
  const Value* force = member(document, "force");
  configuration.force = force == nullptr || force->GetBool();
  configuration.record = besideFile(file, text(document, "record", ""));
  configuration.virtualBoard = besideFile(file, text(document, "virtual_board", ""));
  configuration.buses = readBuses(file, document["buses"]);
  requireVirtualBoard(file, configuration);
  return configuration;
}

}  // namespace SmbusService
