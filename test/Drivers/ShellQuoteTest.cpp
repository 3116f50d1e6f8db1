// SPDX-License-Identifier: Apache-2.0
#include "Drivers/ShellQuote.hpp"

#include <gtest/gtest.h>

#include <random>

#include "Drivers/Helpers.hpp"

namespace {

using Drivers::shellQuote;

// The number of words that the shell makes of it, and the first of them.
std::string throughShell(const std::string& text) {
  std::string output;
  const std::string command = "count() { printf '%d:%s' $# \"$1\"; }; count " + shellQuote(text);
  EXPECT_EQ(Drivers::runCmd(command.c_str(), output), 0) << command;
  return output;
}

TEST(ShellQuote, SetsAQuoteBetweenTwoRuns) {
  EXPECT_EQ(shellQuote("a b"), "'a b'");
  EXPECT_EQ(shellQuote(""), "''");
  EXPECT_EQ(shellQuote("it's"), "'it'\\''s'");
}

TEST(ShellQuote, EndsATextAtItsNul) { EXPECT_EQ(shellQuote(std::string("a\0'", 3)), "'a'"); }

TEST(ShellQuote, MakesOneWordOfWhatAShellWouldRun) {
  for (const char* text : {"",
                           " ",
                           "a b",
                           "; echo run",
                           "$(echo run)",
                           "`echo run`",
                           "$HOME",
                           "'; echo run; '",
                           "'",
                           "''",
                           "\"",
                           "\\",
                           "\\'",
                           "a\nb",
                           "\n",
                           "*",
                           "~",
                           "# not",
                           "&& echo run",
                           "| cat",
                           "> /dev/null",
                           "!",
                           "-n",
                           "\t",
                           "{a,b}",
                           "\x01\x7F\xFF"}) {
    EXPECT_EQ(throughShell(text), std::string("1:") + text);
  }
}

TEST(ShellQuote, MakesOneWordOfRandomBytes) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> bytes(1, 255);
  std::uniform_int_distribution<size_t> lengths(0, 60);
  for (int i = 0; i < 100; ++i) {
    std::string text(lengths(random), '\0');
    for (char& c : text) {
      c = static_cast<char>(bytes(random));
    }
    ASSERT_EQ(throughShell(text), "1:" + text);
  }
}

}  // namespace
