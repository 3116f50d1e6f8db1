// SPDX-License-Identifier: Apache-2.0
//
// A recording for people and for programs: which of its transactions are wanted, and how each is
// printed. docs/nimbo.md describes the JSON.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "smbus/service/recording/Record.hpp"
#include "tools/recording/Decoder.hpp"

namespace Nimbo {

struct TraceFilter {
  std::string bus;     // "SCD bus 0", or its number; empty: any
  std::string device;  // a label, or an address in hexadecimal; empty: any
  bool failedOnly = false;
  std::optional<std::chrono::nanoseconds> since;  // UTC
  std::optional<std::chrono::nanoseconds> until;

  // Whether the transaction and one of its accesses fit.
  bool wants(const SmbusService::Recording::Record& record,
             const std::vector<DecodedAccess>& accesses) const;
  bool wants(std::chrono::nanoseconds time) const;
  bool wantsBus(const std::string& name) const;

  // Whether the device, if one is asked for, is an address or a label of the topology.
  bool namesDevice(const DeviceMap& devices) const;

 private:
  bool wants(const DecodedAccess& access) const;
};

// Lines that end in '\n': some for people, one with a JSON object for programs.
std::string textOf(const SmbusService::Recording::Record& record,
                   const std::vector<DecodedAccess>& accesses);
std::string textOf(const SmbusService::Recording::Gap& gap);
std::string jsonOf(const SmbusService::Recording::Record& record,
                   const std::vector<DecodedAccess>& accesses);
std::string jsonOf(const SmbusService::Recording::Gap& gap);

}  // namespace Nimbo
