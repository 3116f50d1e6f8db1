// SPDX-License-Identifier: Apache-2.0
#include "config/File.hpp"

#include <filesystem>

#include <unistd.h>

#include <gtest/gtest.h>

#include "config/FileError.hpp"

namespace {

namespace fs = std::filesystem;

using Config::FileError;
using Config::readFile;
using Config::writeFile;

class FileTest : public ::testing::Test {
 protected:
  FileTest() : directory_(::testing::TempDir() + "FileTest" + std::to_string(::getpid())) {
    fs::create_directories(directory_);
  }
  ~FileTest() override { fs::remove_all(directory_); }

  std::string path(const std::string& name) const { return (directory_ / name).string(); }
  size_t files() const {
    return static_cast<size_t>(std::distance(fs::directory_iterator(directory_), {}));
  }

  template <typename Call>
  static std::string errorOf(Call call) {
    try {
      call();
    } catch (const FileError& error) {
      return error.what();
    }
    return "no error";
  }

 private:
  fs::path directory_;
};

TEST_F(FileTest, WhatIsWrittenIsRead) {
  const std::string contents = std::string("a\0b\n", 4) + std::string(100'000, 'x');
  writeFile(path("f"), contents);
  EXPECT_EQ(readFile(path("f"), contents.size()), contents);
  EXPECT_EQ(files(), 1U);
}

TEST_F(FileTest, AnEmptyFileIsRead) {
  writeFile(path("f"), "");
  EXPECT_EQ(readFile(path("f"), 0), "");
}

TEST_F(FileTest, AFileThatIsTooLargeIsRefused) {
  writeFile(path("f"), "12345");
  EXPECT_EQ(errorOf([&] { (void)readFile(path("f"), 4); }), path("f") + ": more than 4 bytes");
  EXPECT_EQ(errorOf([] { (void)readFile("/dev/zero", 4); }), "/dev/zero: more than 4 bytes");
}

TEST_F(FileTest, WhatCannotBeReadIsNamedWithTheReason) {
  EXPECT_EQ(errorOf([&] { (void)readFile(path("none"), 4); }),
            path("none") + ": cannot be read: No such file or directory");
  EXPECT_EQ(errorOf([&] { (void)readFile(path(""), 4); }),
            path("") + ": cannot be read: Is a directory");
}

TEST_F(FileTest, WhatCannotBeWrittenIsNamedWithTheReason) {
  EXPECT_EQ(errorOf([&] { writeFile(path("none/f"), "x"); }),
            path("none/f") + ": cannot be written: No such file or directory");
  EXPECT_EQ(errorOf([] { writeFile("/dev/full", "x"); }),
            "/dev/full: cannot be written: No space left on device");
}

TEST_F(FileTest, AFileThatCannotBeReplacedKeepsItsContents) {
  writeFile(path("f"), "old");
  fs::create_symlink("/dev/full", path("f.part"));
  EXPECT_EQ(errorOf([&] { writeFile(path("f"), "new"); }),
            path("f") + ": cannot be written: No space left on device");
  EXPECT_EQ(readFile(path("f"), 10), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(FileTest, AReplacedFileKeepsItsPermissionsAndItsLinks) {
  writeFile(path("f"), "old");
  fs::permissions(path("f"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink(path("f"), path("link"));
  writeFile(path("link"), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
  EXPECT_EQ(readFile(path("f"), 10), "new");
  EXPECT_EQ(fs::status(path("f")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FileTest, WhatIsNoPlainFileIsWrittenTo) {
  writeFile("/dev/null", "x");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
