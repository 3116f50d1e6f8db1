// SPDX-License-Identifier: Apache-2.0
//
// Serves a recording in place of buses: to a message belongs the answer that it got when it was
// recorded. docs/recording.md has the rules.
#pragma once

#include <memory>
#include <vector>

#include "smbus/service/Log.hpp"
#include "smbus/service/recording/RecordingReader.hpp"

namespace SmbusService::Recording {

enum class ReplayMode {
  kStrict,  // on each bus the recorded messages, in their order
  kLoose,   // any messages; each register has its recorded answers
};

class Replay {
 public:
  virtual ~Replay() = default;

  // For any thread. Names what was not recorded in the answer and in the log.
  [[nodiscard]] virtual Smbus::TransactionResponse answer(
      const Smbus::TransactionRequest& request) = 0;
};

// The records of a recording, by number. Damage and gaps are told in the log.
[[nodiscard]] std::vector<Record> loadRecords(RecordingReader& reader, Log& log);

// The log outlives the replay.
[[nodiscard]] std::unique_ptr<Replay> makeReplay(ReplayMode mode, std::vector<Record> records,
                                                 Log& log);

}  // namespace SmbusService::Recording
