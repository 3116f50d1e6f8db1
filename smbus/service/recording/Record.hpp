// SPDX-License-Identifier: Apache-2.0
//
// What a recording holds: a header, and one record for each transaction that the service answered.
// docs/recording.md describes the file.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/service/BusKey.hpp"
#include "smbus/service/Peer.hpp"

namespace SmbusService::Recording {

inline constexpr const char* kFormatName = "nimbo-smbus-recording";
inline constexpr unsigned kFormatVersion = 1;

// Nanoseconds since 1970 (UTC) and since the machine's start.
struct Moment {
  std::chrono::nanoseconds utc{0};
  std::chrono::nanoseconds monotonic{0};
};

// The first line of each file.
struct Header {
  std::string service;  // its version
  Moment begun;
  std::vector<BusKey> buses;
};

struct Record {
  uint64_t number = 0;  // from 1, in the order in which the transactions held their buses
  Moment begun;         // when the whole message was there
  std::chrono::nanoseconds duration{0};  // until its answer was ready
  Peer client;
  Smbus::TransactionRequest request;
  Smbus::TransactionResponse response;
  std::optional<size_t> failedRequest;  // at which a failed transaction ended, counted from 0
};

// So many transactions are missing in the file from here on back to the line before.
struct Gap {
  Moment noticed;
  uint64_t transactions = 0;
};

}  // namespace SmbusService::Recording
