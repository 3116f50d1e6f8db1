// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordingReader.hpp"

#include <gmock/gmock.h>

#include <sstream>

#include "smbus/service/recording/LineWriter.hpp"
#include "test/smbus/service/recording/Recordings.hpp"

namespace SmbusService::Recording {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::vector<BusKey> kBuses{busKey()};

std::string header() { return std::string(LineWriter(kBuses).header({"1", {}, kBuses})); }

std::string record(uint64_t number) {
  Record record;
  record.number = number;
  return std::string(LineWriter(kBuses).record(record));
}

RecordingReader readerOf(const std::string& text) {
  return {"r", std::make_unique<std::istringstream>(text)};
}

Contents contentsOf(const std::string& text) {
  RecordingReader reader = readerOf(text);
  return read(reader);
}

std::string refusalOf(const std::string& text) {
  try {
    (void)readerOf(text);
    return "none";
  } catch (const Config::FileError& error) {
    return error.what();
  }
}

TEST(RecordingReader, GivesTheHeaderAndTheRecords) {
  EXPECT_EQ(readerOf(header()).header().buses, kBuses);
  EXPECT_THAT(contentsOf(header()).records, IsEmpty());
  EXPECT_EQ(contentsOf(header() + record(1) + record(2)).records.at(1).number, 2U);
}

TEST(RecordingReader, ADamagedLineIsToldWithItsPlaceAndTheRestIsRead) {
  const Contents contents = contentsOf(header() + record(1) + "{\"n\":\n" + record(2));
  EXPECT_EQ(contents.records.size(), 2U);
  EXPECT_THAT(contents.damages, ElementsAre(HasSubstr("r:3:6: ")));
}

TEST(RecordingReader, ALastLineWithoutItsEndIsCutOff) {
  std::string text = header() + record(1);
  text.pop_back();
  const Contents contents = contentsOf(text);
  EXPECT_THAT(contents.records, IsEmpty());
  EXPECT_THAT(contents.damages, ElementsAre(HasSubstr("the line is cut off")));
}

TEST(RecordingReader, ALineOfAnyLengthTakesBoundedMemory) {
  const std::string text = header() + std::string(20'000'000, '[') + "\n" + record(1);
  const Contents contents = contentsOf(text);
  EXPECT_THAT(contents.damages, ElementsAre("r:2:1: the line is too long for one of a recording"));
  EXPECT_EQ(contents.records.size(), 1U);
}

TEST(RecordingReader, ASecondHeaderIsDamage) {
  EXPECT_THAT(contentsOf(header() + header()).damages,
              ElementsAre("r:2:1: a header belongs into the first line"));
}

TEST(RecordingReader, AFileOfAnotherKindIsRefusedAtOnce) {
  EXPECT_THAT(refusalOf("#!/bin/sh\nexit\n"), HasSubstr("r:1:1: "));
  EXPECT_THAT(refusalOf(record(1)), HasSubstr("r:1:1: a recording begins with its header"));
  EXPECT_EQ(refusalOf(""), "r: the file is empty; a recording has a header at least");
}

TEST(RecordingReader, AFileThatIsNotThereIsRefused) {
  try {
    const RecordingReader reader("/nowhere/r");
    FAIL() << "it was read";
  } catch (const Config::FileError& error) {
    EXPECT_STREQ(error.what(), "/nowhere/r: cannot be read: No such file or directory");
  }
}

TEST(RecordingReader, ADirectoryIsRefused) {
  try {
    const RecordingReader reader("/tmp");
    FAIL() << "it was read";
  } catch (const Config::FileError& error) {
    EXPECT_STREQ(error.what(), "/tmp: cannot be read: Is a directory");
  }
}

}  // namespace
}  // namespace SmbusService::Recording
