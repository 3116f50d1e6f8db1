// SPDX-License-Identifier: Apache-2.0
#include "ipmi/ToolRun.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

#include "ipmi/Reading.hpp"
#include "test/ipmi/Directory.hpp"

namespace IpmiPlugin {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 60s;

// A process that is dead and not reaped yet has no command line.
bool runs(const std::string& pid) {
  std::string words;
  std::ifstream in("/proc/" + pid.substr(0, pid.find('\n')) + "/cmdline");
  std::getline(in, words);
  return !words.empty();
}

void expectGone(const std::string& pid) {
  ASSERT_NE(pid, "");
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (runs(pid) && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_FALSE(runs(pid));
}

class RunningATool : public testing::Test {
 protected:
  ToolResult run(const std::string& script, std::chrono::milliseconds limit = kPatience) {
    ToolRunner runner(limit);
    return runner.run({"/bin/sh", "-c", script, "sh"}, stop);
  }

  std::string failure(const std::string& script, std::chrono::milliseconds limit = kPatience) {
    try {
      run(script, limit);
      return "it ended by itself";
    } catch (const ReadError& error) {
      return error.what();
    }
  }

  Stop stop;
  Doubles::Directory directory;
};

TEST_F(RunningATool, GivesBothOutputsAndTheExitCode) {
  const ToolResult result = run("echo out; echo err >&2; exit 3");
  EXPECT_EQ(result.out, "out\n");
  EXPECT_EQ(result.err, "err\n");
  EXPECT_EQ(result.exitCode, 3);
}

TEST_F(RunningATool, ToolThatASignalEndsHasNoExitCode) {
  EXPECT_EQ(run("kill -9 $$").exitCode, -1);
}

TEST_F(RunningATool, OutputLargerThanAPipeIsWhole) {
  EXPECT_EQ(run("head -c 500000 /dev/zero").out.size(), 500000u);
}

TEST_F(RunningATool, TooMuchOutputIsAFailure) {
  EXPECT_EQ(failure("cat /dev/zero"), "sh printed too much");
}

TEST_F(RunningATool, MissingToolIsNamed) {
  ToolRunner runner(kPatience);
  try {
    runner.run({"/nowhere/ipmi-sensors"}, stop);
    FAIL();
  } catch (const ReadError& error) {
    EXPECT_STREQ(error.what(), "/nowhere/ipmi-sensors cannot be run: No such file or directory");
  }
}

TEST_F(RunningATool, ToolThatHangsIsKilledWithWhatItStarted) {
  EXPECT_EQ(failure("sleep 1000 & echo $! > " + directory.path("pid") + "; wait", 500ms),
            "sh did not end in time and was killed");
  expectGone(directory.read("pid"));
}

TEST_F(RunningATool, ToolThatIgnoresSignalsIsKilled) {
  EXPECT_EQ(failure("trap '' TERM INT HUP; while :; do sleep 1000; done", 300ms),
            "sh did not end in time and was killed");
}

TEST_F(RunningATool, StopEndsIt) {
  stop.request();
  EXPECT_EQ(failure("sleep 1000"), "sh was stopped");
}

TEST_F(RunningATool, WhatItLeavesRunningIsKilledAndNotWaitedFor) {
  EXPECT_EQ(run("sleep 1000 & echo $! > " + directory.path("pid") + "; echo done").out, "done\n");
  expectGone(directory.read("pid"));
}

TEST_F(RunningATool, GetsNoDescriptorOfThisProcess) {
  const int leak = ::open("/dev/null", O_RDONLY);  // not closed on exec
  ASSERT_GE(leak, 3);
  EXPECT_EQ(run("[ -e /proc/$$/fd/" + std::to_string(leak) + " ] && echo leaked").out, "");
  ::close(leak);
}

TEST_F(RunningATool, GetsNoEnvironmentOfThisProcess) {
  ::setenv("NIMBO_SECRET", "x", 1);
  EXPECT_EQ(run("echo $LC_ALL${NIMBO_SECRET-}").out, "C\n");
}

TEST_F(RunningATool, GetsSignalsAsAShellFindsThem) {
  ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(run("kill -PIPE $$; echo ignored").exitCode, -1);
  ::signal(SIGPIPE, SIG_DFL);
}

TEST_F(RunningATool, HostThatReapsEveryChildDoesNotDisturb) {
  ::signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(run("echo out").out, "out\n");
  ::signal(SIGCHLD, SIG_DFL);
}

}  // namespace

}  // namespace IpmiPlugin
