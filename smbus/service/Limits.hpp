// SPDX-License-Identifier: Apache-2.0
//
// Every bound that the service sets to what others may cost it, in one table: the configuration
// reads its keys, ranges and defaults from it, the documents show it.
#pragma once

#include <cstdint>
#include <span>

namespace SmbusService {

struct Limits {
  uint32_t connections = 1024;
  uint32_t connectionsPerUser = 256;
  uint32_t messageBytes = 1024 * 1024;
  uint32_t requests = 4096;
  uint32_t readBytes = 8192;
  uint32_t retries = 16;
  uint32_t frameMs = 5000;
  uint32_t sendMs = 5000;
  uint32_t busMs = 5000;
  uint32_t transactionMs = 15000;
  uint32_t stopMs = 10000;
  uint32_t recordBytes = 64 * 1024 * 1024;
  uint32_t recordQueueBytes = 4 * 1024 * 1024;
  uint32_t logLines = 50;
  uint32_t controlConnections = 16;
  uint32_t controlLineBytes = 1024 * 1024;
};

struct LimitRow {
  const char* key;  // in the configuration's "limits"
  uint32_t Limits::*value;
  uint32_t least;
  uint32_t most;
  const char* unit;
  const char* meaning;
};

// In the order of the members.
[[nodiscard]] std::span<const LimitRow> limitTable();

}  // namespace SmbusService
