// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Log.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace SmbusService {
namespace {

std::string written(Level level, std::string_view text) {
  StandardErrorLog log;
  testing::internal::CaptureStderr();
  log.line(level, text);
  return testing::internal::GetCapturedStderr();
}

TEST(StandardErrorLog, NamesTheService) {
  ::unsetenv("JOURNAL_STREAM");
  EXPECT_EQ(written(Level::kInfo, "serving 4 buses"), "smbusd: serving 4 buses\n");
}

TEST(StandardErrorLog, TellsTheJournalThePriority) {
  ::setenv("JOURNAL_STREAM", "8:1", 1);
  EXPECT_EQ(written(Level::kWarning, "closed"), "<4>closed\n");
}

TEST(StandardErrorLog, TakesNoLineOrTerminalCodeFromAName) {
  ::unsetenv("JOURNAL_STREAM");
  EXPECT_EQ(written(Level::kInfo, "\"a\nsmbusd: b\x1b[31m\x7f\" d\u00e9j\u00e0"),
            "smbusd: \"a\\x0asmbusd: b\\x1b[31m\\x7f\" d\u00e9j\u00e0\n");
}

}  // namespace
}  // namespace SmbusService
