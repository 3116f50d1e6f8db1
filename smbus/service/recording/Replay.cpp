// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Replay.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "smbus/service/recording/LooseReplay.hpp"
#include "smbus/service/recording/StrictReplay.hpp"

namespace SmbusService::Recording {

std::vector<Record> loadRecords(RecordingReader& reader, Log& log) {
  std::vector<Record> records;
  Line line;
  while (reader.next(line)) {
    if (auto* record = std::get_if<Record>(&line)) {
      records.push_back(std::move(*record));
    } else if (const auto* gap = std::get_if<Gap>(&line)) {
      log.line(Level::kWarning, fmt::format("{}: {} transactions are missing here",
                                            reader.place().text(), gap->transactions));
    } else if (const auto* damage = std::get_if<Damage>(&line)) {
      log.line(Level::kWarning,
               fmt::format("{}: {}", reader.place(*damage).text(), damage->message));
    }
  }
  std::ranges::stable_sort(records, {}, &Record::number);
  return records;
}

std::unique_ptr<Replay> makeReplay(ReplayMode mode, std::vector<Record> records, Log& log) {
  if (mode == ReplayMode::kStrict) {
    return std::make_unique<StrictReplay>(std::move(records), log);
  }
  return std::make_unique<LooseReplay>(records, log);
}

}  // namespace SmbusService::Recording
