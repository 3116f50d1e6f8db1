// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Listener.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "test/smbus/service/support/MemoryLog.hpp"
#include "test/smbus/service/support/TestClient.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;

class ListenerTest : public testing::Test {
 protected:
  ListenerTest() { std::filesystem::remove(settings_.path); }
  ~ListenerTest() override { std::filesystem::remove(settings_.path); }

  std::string errorOf(const SocketSettings& settings) {
    try {
      const ListeningSocket socket(settings);
    } catch (const ListenError& error) {
      return error.what();
    }
    return "";
  }

  SocketSettings settings_{testing::TempDir() + "listener_" + std::to_string(::getpid()), 0660, ""};
};

TEST_F(ListenerTest, ClientsCanConnectUntilTheSocketIsGone) {
  {
    const ListeningSocket socket(settings_);
    EXPECT_TRUE(TestClient(settings_.path).connected());
  }
  EXPECT_FALSE(std::filesystem::exists(settings_.path));
}

TEST_F(ListenerTest, TheSocketHasTheModeAskedFor) {
  for (const mode_t mode : {mode_t{0660}, mode_t{0600}}) {
    settings_.mode = mode;
    const ListeningSocket socket(settings_);
    struct stat status {};
    ASSERT_EQ(::stat(settings_.path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, mode);
  }
}

TEST_F(ListenerTest, ASocketInUseIsAnErrorAndStaysInUse) {
  const ListeningSocket socket(settings_);
  EXPECT_EQ(errorOf(settings_),
            "a service listens at " + settings_.path + " already; stop it or choose another path");
  EXPECT_TRUE(TestClient(settings_.path).connected());
}

TEST_F(ListenerTest, ASocketLeftBehindIsReplaced) {
  const Descriptor left(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  settings_.path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(left.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const ListeningSocket socket(settings_);
  EXPECT_TRUE(TestClient(settings_.path).connected());
}

TEST_F(ListenerTest, AnotherKindOfFileIsLeftAlone) {
  std::ofstream(settings_.path) << "precious";
  EXPECT_THAT(errorOf(settings_), HasSubstr("exists and is not a socket"));
  EXPECT_EQ(std::filesystem::file_size(settings_.path), 8U);
}

TEST_F(ListenerTest, APathThatCannotBeIsAnError) {
  settings_.path = "/no/such/directory/socket";
  EXPECT_EQ(errorOf(settings_),
            "cannot make the socket /no/such/directory/socket: No such file or directory; see that "
            "its directory exists and can be written");
  settings_.path = "/tmp/" + std::string(200, 'x');
  EXPECT_THAT(errorOf(settings_), HasSubstr("is longer than 107 bytes"));
}

TEST_F(ListenerTest, AGroupThatIsNotThereIsAnErrorAndLeavesNoSocket) {
  settings_.group = "no-such-group-here";
  EXPECT_THAT(errorOf(settings_), HasSubstr("there is no group no-such-group-here"));
  EXPECT_FALSE(std::filesystem::exists(settings_.path));
}

// An acceptor on a thread of its own, until the end of the test.
class Accepting {
 public:
  Accepting(const SocketSettings& settings, Clock& clock, Log& log, Acceptor::Accepted accepted)
      : socket_(settings),
        acceptor_(socket_.descriptor(), clock, log, std::move(accepted)),
        thread_([this] { acceptor_.run(stop_.get()); }) {}
  ~Accepting() {
    ::eventfd_write(stop_.get(), 1);
    thread_.join();
  }

 private:
  ListeningSocket socket_;
  Acceptor acceptor_;
  Descriptor stop_{::eventfd(0, EFD_CLOEXEC)};
  std::thread thread_;
};

TEST_F(ListenerTest, EachClientIsAcceptedWithItsCredentials) {
  SystemClock clock;
  MemoryLog log;
  std::atomic<pid_t> pid{0};
  std::atomic<uid_t> uid{12345};
  const Accepting accepting(settings_, clock, log, [&](Descriptor, const Peer& peer) {
    uid = peer.uid;
    pid = peer.pid;
  });
  TestClient client(settings_.path);
  EXPECT_TRUE(client.closedByPeer());
  EXPECT_EQ(pid, ::getpid());
  EXPECT_EQ(uid, ::getuid());
}

// Takes every descriptor that the process may have, but for a few.
class DescriptorsUsedUp {
 public:
  explicit DescriptorsUsedUp(size_t left) {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    rlimit few = before_;
    few.rlim_cur = 100;
    ::setrlimit(RLIMIT_NOFILE, &few);
    for (Descriptor next(nullFile()); next.valid(); next = Descriptor(nullFile())) {
      taken_.push_back(std::move(next));
    }
    taken_.resize(taken_.size() - left);
  }
  ~DescriptorsUsedUp() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  static int nullFile() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

  rlimit before_{};
  std::vector<Descriptor> taken_;
};

TEST_F(ListenerTest, WithoutDescriptorsClientsAreTurnedAwayAndLaterOnesServed) {
  SystemClock clock;
  MemoryLog log;
  const Accepting accepting(settings_, clock, log, [](Descriptor client, const Peer&) {
    EXPECT_EQ(::send(client.get(), "!", 1, MSG_NOSIGNAL), 1);
  });
  {
    const DescriptorsUsedUp usedUp(1);  // for the client's own end
    TestClient client(settings_.path);
    ASSERT_TRUE(client.connected());
    EXPECT_TRUE(client.closedByPeer());
    EXPECT_TRUE(log.has("a client is turned away: Too many open files"));
  }
  TestClient client(settings_.path);
  char greeting = 0;
  EXPECT_EQ(::recv(client.descriptor(), &greeting, 1, 0), 1);
  EXPECT_EQ(greeting, '!');
}

}  // namespace
}  // namespace SmbusService
