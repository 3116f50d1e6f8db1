// SPDX-License-Identifier: Apache-2.0
//
// The control socket with clients that behave, and with others.
#include "smbus/service/control/ControlSocket.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <optional>

#include "test/smbus/service/support/LineClient.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;
using testing::Optional;

class ControlSocketTest : public testing::Test {
 protected:
  ControlSocketTest() : path_(testing::TempDir() + "control_" + std::to_string(::getpid())) {
    limits_.controlConnections = 2;
    limits_.controlLineBytes = 1024;
    limits_.frameMs = 50;
    limits_.sendMs = 1000;
    socket_.emplace(
        SocketSettings{path_, 0660, ""}, limits_, clock_,
        [this](std::string_view line) { return answerTo(line); },
        [this] { return ++rounds_, TimePoint::max(); });
  }

  std::string answerTo(std::string_view line) const {
    return line == "much" ? std::string(kMuch, 'x') : "heard " + std::string(line);
  }

  static constexpr size_t kMuch = 4 * 1024 * 1024;

  std::string path_;
  Limits limits_;
  SystemClock clock_;
  std::atomic<int> rounds_{0};
  std::optional<ControlSocket> socket_;
};

TEST_F(ControlSocketTest, IsForItsGroupAndGoesWithItsOwner) {
  struct stat status {};
  ASSERT_EQ(::stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0660U);
  socket_.reset();
  EXPECT_NE(::stat(path_.c_str(), &status), 0);
}

TEST_F(ControlSocketTest, AnswersLineByLine) {
  LineClient client(path_);
  client.say("one\ntwo\nthr");
  EXPECT_THAT(client.hear(), Optional(std::string("heard one")));
  EXPECT_THAT(client.hear(), Optional(std::string("heard two")));
  client.say("ee\n");
  EXPECT_THAT(client.hear(), Optional(std::string("heard three")));
}

TEST_F(ControlSocketTest, WhoeverSaysNoMoreStillGetsEveryAnswer) {
  LineClient client(path_);
  client.say("1\n2\n3\n");
  client.sayNoMore();
  for (const char* line : {"heard 1", "heard 2", "heard 3"}) {
    EXPECT_THAT(client.hear(), Optional(std::string(line)));
  }
  EXPECT_EQ(client.hear(), std::nullopt);
}

TEST_F(ControlSocketTest, ALongAnswerArrivesWhole) {
  LineClient client(path_);
  client.say("much\n");
  const auto answer = client.hear();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->size(), kMuch);
}

TEST_F(ControlSocketTest, TooLongALineIsToldAndEndsTheConnection) {
  LineClient client(path_);
  client.say(std::string(2000, 'x'));
  EXPECT_THAT(client.hear(), Optional(HasSubstr("too long")));
  EXPECT_EQ(client.hear(), std::nullopt);
}

TEST_F(ControlSocketTest, ALineThatDoesNotEndInTimeIsGivenUp) {
  LineClient client(path_);
  client.say("slow");
  EXPECT_EQ(client.hear(), std::nullopt);
}

TEST_F(ControlSocketTest, OneClientTooManyIsTurnedAway) {
  LineClient first(path_);
  LineClient second(path_);
  LineClient third(path_);
  EXPECT_THAT(third.hear(), Optional(HasSubstr("too many control connections")));
  EXPECT_EQ(third.hear(), std::nullopt);
  second.say("still here\n");
  EXPECT_THAT(second.hear(), Optional(std::string("heard still here")));
}

TEST_F(ControlSocketTest, WhoeverDoesNotTakeItsAnswerIsLeftAndOthersAreServed) {
  LineClient deaf(path_);
  deaf.say("much\nmuch\n");
  LineClient other(path_);
  for (int i = 0; i < 100; ++i) {
    other.say("x\n");
    ASSERT_THAT(other.hear(), Optional(std::string("heard x")));
  }
  std::optional<std::string> heard;
  while (heard != "heard room") {  // until the deaf one's place is free
    LineClient third(path_);
    third.say("room\n");
    heard = third.hear();
  }
}

TEST_F(ControlSocketTest, AnyBytesAreALine) {
  LineClient client(path_);
  std::string bytes;
  for (int i = 1; i < 256; ++i) {
    if (i != '\n') {
      bytes.push_back(static_cast<char>(i));
    }
  }
  client.say(bytes + "\n\n");
  EXPECT_THAT(client.hear(), Optional("heard " + bytes));
  EXPECT_THAT(client.hear(), Optional(std::string("heard ")));
}

TEST(ControlSocketDue, WhatIsDueHappensWithoutAnyRequest) {
  SystemClock clock;
  const Limits limits;
  std::atomic<int> happened{0};
  const ControlSocket socket(
      {testing::TempDir() + "due_" + std::to_string(::getpid()), 0600, ""}, limits, clock,
      [](std::string_view) { return std::string(); },
      [&] {
        ++happened;
        return clock.now() + Milliseconds(1);
      });
  while (happened < 3) {
    std::this_thread::yield();
  }
}

}  // namespace
}  // namespace SmbusService
