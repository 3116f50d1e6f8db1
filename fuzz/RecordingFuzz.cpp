// SPDX-License-Identifier: Apache-2.0
//
// What the reader of recordings makes of any bytes. Whatever it takes for a record is written and
// read as the same record, and a strict replay of the records gives each its own answer.
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/Require.hpp"
#include "smbus/service/recording/LineWriter.hpp"
#include "smbus/service/recording/Replay.hpp"

namespace {

using namespace SmbusService;
using namespace SmbusService::Recording;

class SilentLog : public Log {
 public:
  void line(Level, std::string_view) override {}
};

// With the fields that the file leaves to their defaults filled in, a line says the same again.
void checkLine(const Record& record, const Header& header) {
  LineWriter writer(header.buses);
  const std::string first(writer.record(record));
  const Line again = readLine(std::string_view(first).substr(0, first.size() - 1), header.buses);
  require(std::holds_alternative<Record>(again), "what was written is read");
  require(writer.record(std::get<Record>(again)) == first, "as it was written");
}

void checkReplays(const std::vector<Record>& records) {
  SilentLog log;
  const auto strict = makeReplay(ReplayMode::kStrict, records, log);
  const auto loose = makeReplay(ReplayMode::kLoose, records, log);
  for (const Record& record : records) {
    const Smbus::TransactionResponse answer = strict->answer(record.request);
    require(record.request.request_size() == 0 ||
                answer.SerializeAsString() == record.response.SerializeAsString(),
            "a strict replay gives the recorded answer");
    const Smbus::TransactionResponse other = loose->answer(record.request);
    require(other.failed() || other.response_size() == record.request.request_size(),
            "a loose replay answers each request");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    RecordingReader reader("input", std::make_unique<std::istringstream>(
                                        std::string(reinterpret_cast<const char*>(data), size)));
    SilentLog log;
    const std::vector<Record> records = loadRecords(reader, log);
    for (const Record& record : records) {
      checkLine(record, reader.header());
    }
    checkReplays(records);
  } catch (const Config::FileError&) {
    // no recording
  }
  return 0;
}
