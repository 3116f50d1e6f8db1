// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordingFile.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "test/smbus/service/recording/FileSizeLimit.hpp"
#include "test/smbus/service/recording/Recordings.hpp"

namespace SmbusService::Recording {
namespace {

using testing::HasSubstr;

constexpr size_t kBytes = 200;  // of both files
const std::string kLine(29, 'x');

class RecordingFileTest : public RecordingTest {
 protected:
  RecordingFile::FirstLine firstLine() {
    return [this] { return "header " + std::to_string(++begun_) + "\n"; };
  }
  static void append(RecordingFile& file, int lines) {
    for (int i = 0; i < lines; ++i) {
      file.append(kLine + "\n", 1);
      file.flush();
    }
  }

  int begun_ = 0;
};

TEST_F(RecordingFileTest, BeginsWithItsFirstLine) {
  RecordingFile file(path(), kBytes, firstLine());
  append(file, 1);
  EXPECT_EQ(contents(path()), "header 1\n" + kLine + "\n");
  EXPECT_FALSE(std::filesystem::exists(older()));
}

TEST_F(RecordingFileTest, IsForItsGroupToReadAndForNobodyElse) {
  RecordingFile file(path(), kBytes, firstLine());
  struct stat status {};
  ASSERT_EQ(::stat(path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0137U, 0U);
}

TEST_F(RecordingFileTest, WhatWasThereBeforeIsPutAway) {
  std::ofstream(path()) << "before";
  const RecordingFile file(path(), kBytes, firstLine());
  EXPECT_EQ(contents(older()), "before");
  EXPECT_EQ(contents(path()), "header 1\n");
}

TEST_F(RecordingFileTest, AFullFileBecomesTheOlderOne) {
  RecordingFile file(path(), kBytes, firstLine());
  append(file, 4);
  EXPECT_EQ(contents(older()), "header 1\n" + kLine + "\n" + kLine + "\n" + kLine + "\n");
  EXPECT_EQ(contents(path()), "header 2\n" + kLine + "\n");
}

TEST_F(RecordingFileTest, BothTogetherNeverTakeMoreThanTheyMay) {
  RecordingFile file(path(), kBytes, firstLine());
  for (int i = 0; i < 100; ++i) {
    append(file, 1);
    const size_t before =
        std::filesystem::exists(older()) ? std::filesystem::file_size(older()) : 0;
    EXPECT_LE(before + std::filesystem::file_size(path()), kBytes);
  }
  EXPECT_EQ(file.takeLost(), 0U);
}

TEST_F(RecordingFileTest, ALineThatFitsIntoNoFileIsLost) {
  RecordingFile file(path(), kBytes, firstLine());
  append(file, 1);
  file.append(std::string(kBytes, 'x') + "\n", 3);
  append(file, 1);
  EXPECT_EQ(file.takeLost(), 3U);
  EXPECT_EQ(file.takeLost(), 0U);
  EXPECT_EQ(contents(path()), "header 1\n" + kLine + "\n" + kLine + "\n");
}

TEST_F(RecordingFileTest, AFileThatCannotBeMadeIsToldWithARemedy) {
  try {
    const RecordingFile file(directory_ / "nowhere" / "r", kBytes, firstLine());
    FAIL() << "it was made";
  } catch (const RecordingError& error) {
    EXPECT_THAT(error.what(),
                HasSubstr("nowhere/r: the recording cannot be written: No such file"));
    EXPECT_THAT(error.what(), HasSubstr("name a file in a directory"));
  }
}

TEST_F(RecordingFileTest, WithoutRoomWholeLinesAreLostAndLaterOnesAreNot) {
  RecordingFile file(path(), kBytes, firstLine());
  append(file, 1);
  {
    const FileSizeLimit full(50);  // in the middle of the second line
    append(file, 1);
    EXPECT_EQ(file.error(), EFBIG);
  }
  append(file, 1);
  EXPECT_EQ(file.error(), 0);
  EXPECT_EQ(file.takeLost(), 1U);
  EXPECT_EQ(contents(path()), "header 1\n" + kLine + "\n" + kLine + "\n");
}

TEST_F(RecordingFileTest, WithoutRoomForANewFileTheOlderOneStays) {
  RecordingFile file(path(), kBytes, firstLine());
  append(file, 3);
  {
    const FileSizeLimit full(0);
    append(file, 3);
  }
  append(file, 1);
  EXPECT_EQ(file.takeLost(), 3U);
  EXPECT_THAT(contents(older()), HasSubstr("header 1\n"));
  EXPECT_THAT(contents(path()), testing::EndsWith("\n" + kLine + "\n"));
}

}  // namespace
}  // namespace SmbusService::Recording
