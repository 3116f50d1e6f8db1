// SPDX-License-Identifier: Apache-2.0
//
// Any messages: each access of a register gets the outcomes that it had in the recording, one after
// the other. When they have run out, the last one stays; but a read then gives what was written to
// the register since its last recorded read, if anything was. A register that is known takes any
// value.
//
// A register is that of a device behind a path: the muxes and channels that the message selects on
// its way, which it releases at its end.
#pragma once

#include <compare>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "smbus/service/recording/Replay.hpp"
#include "smbus/service/recording/Route.hpp"

namespace SmbusService::Recording {

class LooseReplay : public Replay {
 public:
  LooseReplay(const std::vector<Record>& records, Log& log);

  Smbus::TransactionResponse answer(const Smbus::TransactionRequest& request) override;

 private:
  struct Place {
    std::optional<BusKey> bus;
    Path path;
    uint32_t device = 0;
    uint32_t number = 0;  // the register

    auto operator<=>(const Place&) const = default;
  };
  struct Access {
    Place place;
    int type = -1;  // of request; negative: none
    uint32_t size = 0;

    auto operator<=>(const Access&) const = default;
  };
  struct Outcome {
    std::string data;
    std::optional<std::string> reason;  // of a failure
  };
  struct History {
    std::vector<Outcome> outcomes;
    size_t next = 0;
  };

  // The access of each request of a message.
  [[nodiscard]] static std::vector<Access> accessesOf(const Smbus::TransactionRequest& message);
  void learn(const Record& record);
  [[nodiscard]] Outcome outcome(const Access& access, const Smbus::Request& request, int index);
  [[nodiscard]] std::optional<Outcome> written(const Access& access) const;
  [[nodiscard]] Outcome unknown(const Smbus::Request& request, int index) const;

  Log& log_;
  std::mutex mutex_;
  std::map<Access, History> histories_;
  std::set<Place> places_;                 // that were read or written without failure
  std::map<Place, std::string> recorded_;  // what the recording wrote last
  std::map<Place, std::string> written_;   // what was written since
};

}  // namespace SmbusService::Recording
