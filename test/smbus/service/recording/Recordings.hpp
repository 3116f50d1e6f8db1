// SPDX-License-Identifier: Apache-2.0
//
// Recordings in the hands of a test: a directory of its own, entries to put and lines to look at.
#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "smbus/service/recording/RecordQueue.hpp"
#include "smbus/service/recording/RecordingReader.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService::Recording {

class RecordingTest : public testing::Test {
 protected:
  RecordingTest() {
    std::string name = testing::TempDir() + "recording_XXXXXX";
    directory_ = ::mkdtemp(name.data());
  }
  ~RecordingTest() override { std::filesystem::remove_all(directory_); }

  [[nodiscard]] std::string path() const { return directory_ / "r"; }
  [[nodiscard]] std::string older() const { return path() + ".1"; }

  static std::string contents(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::filesystem::path directory_;
};

// Everything that a recording says after its header.
struct Contents {
  std::vector<Record> records;
  uint64_t dropped = 0;
  std::vector<std::string> damages;  // "file:line:column: message"
};

inline Contents read(RecordingReader& reader) {
  Contents contents;
  Line line;
  while (reader.next(line)) {
    if (const auto* record = std::get_if<Record>(&line)) {
      contents.records.push_back(*record);
    } else if (const auto* gap = std::get_if<Gap>(&line)) {
      contents.dropped += gap->transactions;
    } else if (const auto* damage = std::get_if<Damage>(&line)) {
      contents.damages.push_back(reader.place(*damage).text() + ": " + damage->message);
    }
  }
  return contents;
}

inline Contents read(const std::string& path) {
  RecordingReader reader(path);
  return read(reader);
}

inline rapidjson::Document parsed(std::string_view line) {
  rapidjson::Document document;
  document.Parse(line.data(), line.size());
  EXPECT_FALSE(document.HasParseError()) << line;
  return document;
}

}  // namespace SmbusService::Recording
