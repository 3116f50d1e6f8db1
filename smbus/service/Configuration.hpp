// SPDX-License-Identifier: Apache-2.0
//
// The service's configuration file. smbusd.schema.json says what it may contain, docs/smbusd.md
// what that means.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "config/JsonFile.hpp"
#include "smbus/service/BusKey.hpp"
#include "smbus/service/Limits.hpp"
#include "smbus/service/Listener.hpp"

namespace SmbusService {

// The Linux adapter of a bus, by number or by name.
struct LinuxBackEnd {
  std::variant<uint32_t, std::string> adapter;
};

// The bus of the virtual board.
struct VirtualBackEnd {
  std::string bus;
};

struct BusEntry {
  BusKey key;
  std::variant<LinuxBackEnd, VirtualBackEnd> backEnd;
  std::string pointer;  // JSON pointer of the back-end, for messages about it
};

struct Configuration {
  SocketSettings socket;
  // Its path is empty if the configuration does not name one: it is then beside the socket, and
  // there only for a virtual board.
  SocketSettings control;
  Limits limits;
  uint32_t retries = 0;
  bool force = true;
  std::string record;        // path of the recording; empty: none
  std::string virtualBoard;  // path; empty: none
  std::vector<BusEntry> buses;
};

// Throws Config::FileError for what the schema forbids, for a bus that stands there twice, and for
// a virtual bus without a virtual board.
[[nodiscard]] Configuration readConfiguration(const Config::JsonFile& file);

// One without a file, and without buses.
[[nodiscard]] Configuration defaultConfiguration();

// The schema's text.
[[nodiscard]] std::string_view configurationSchema();

}  // namespace SmbusService
