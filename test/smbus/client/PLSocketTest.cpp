// SPDX-License-Identifier: Apache-2.0
#include "NimboUtil/PLSocket.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

#include "test/smbus/client/PLSocketSupport.hpp"
#include "test/support/ScriptedService.hpp"

namespace PlatformLibrary {

// What a new object holds, in the order of its fields, and a hand on two of them.
class PLSocketState {
 public:
  static void expectFresh(const PLSocket& socket) {
    EXPECT_EQ(socket.fd_, -1);
    EXPECT_EQ(socket.fdWatcher_, 0U);
    EXPECT_EQ(socket.owner_, 0U);
    EXPECT_TRUE(socket.settled_);
    EXPECT_EQ(socket.incoming_, std::string(4, '\0'));
    EXPECT_EQ(socket.received_, 0U);
    EXPECT_EQ(socket.sent_, 0U);
    EXPECT_EQ(socket.awaited_, 4U);
    EXPECT_TRUE(socket.outgoing_.empty());
    EXPECT_TRUE(socket.queue_.empty());
  }
  static bool inOrder(const PLSocket& socket) {
    const void* fields[] = {&socket.fd_,       &socket.fdWatcher_, &socket.owner_, &socket.settled_,
                            &socket.incoming_, &socket.received_,  &socket.sent_,  &socket.awaited_,
                            &socket.outgoing_, &socket.queue_};
    return std::is_sorted(std::begin(fields), std::end(fields)) && fields[0] == &socket;
  }
  static int descriptor(const PLSocket& socket) { return socket.fd_; }
  static void watch(PLSocket& socket, uint64_t handle) { socket.fdWatcher_ = handle; }
};

}  // namespace PlatformLibrary

namespace {

using Doubles::answer;
using Doubles::ScriptedService;
using PlatformLibrary::PLSocket;
using PlatformLibrary::PLSocketState;
using SocketTest::call;
using SocketTest::kByteRead;
using SocketTest::kRead;
using SocketTest::kWrite;

// What a descriptor of this process stands for, e.g. "socket:[4711]".
std::string link(const std::string& fd) {
  std::error_code gone;
  return std::filesystem::read_symlink("/proc/self/fd/" + fd, gone);
}

std::multiset<std::string> openFiles() {
  std::multiset<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    files.insert(link(entry.path().filename()));
  }
  return files;
}

std::string fileOf(const PLSocket& socket) {
  return link(std::to_string(PLSocketState::descriptor(socket)));
}

bool isOpen(const std::string& file) { return openFiles().count(file) > 0; }

struct WatcherDeleted {
  uint64_t handle = 0;
  std::string watched;
  bool watchedWasOpen = false;
} watcherDeleted;

}  // namespace

// The host's service, as this program offers it.
extern "C" void pl_fd_watcher_delete(pl_fd_watcher_handle handle) {
  watcherDeleted.handle = handle;
  watcherDeleted.watchedWasOpen = isOpen(watcherDeleted.watched);
}

namespace {

struct PLSocketTest : testing::Test {
  PLSocketTest() {
    ::unsetenv("SIMULATION_VMID");
    watcherDeleted = {};
  }
};

TEST_F(PLSocketTest, StartsInTheStateThatItsUsersRelyOn) {
  const PLSocket socket;
  PLSocketState::expectFresh(socket);
  EXPECT_TRUE(PLSocketState::inOrder(socket));
}

TEST_F(PLSocketTest, SetupConnects) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  EXPECT_EQ(call(socket, kRead).result, 0);
  EXPECT_EQ(service.connections(), 1U);
}

TEST_F(PLSocketTest, SetupFailsWithoutAServiceAndMayBeTriedAgain) {
  ScriptedService service;
  service.stop();
  PLSocket socket;
  EXPECT_LT(socket.setup(), 0);
  EXPECT_EQ(errno, ENOENT);
  service.start();
  EXPECT_EQ(socket.setup(), 0);
}

TEST_F(PLSocketTest, RepeatedSetupReplacesTheConnection) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  const std::string first = fileOf(socket);
  ASSERT_TRUE(isOpen(first));
  ASSERT_EQ(socket.setup(), 0);
  EXPECT_FALSE(isOpen(first));
  EXPECT_EQ(call(socket, kRead).result, 0);
}

TEST_F(PLSocketTest, APathThatNoSocketCanHaveIsRefused) {
  ::setenv("NIMBO_SMBUS_SOCKET", std::string(108, 'p').c_str(), 1);
  PLSocket socket;
  EXPECT_LT(socket.setup(), 0);
  EXPECT_EQ(errno, ENAMETOOLONG);
  EXPECT_EQ(call(socket, kRead).error, ENAMETOOLONG);
}

TEST_F(PLSocketTest, SimulationNeedsNoService) {
  ::setenv("SIMULATION_VMID", "1", 1);
  ::setenv("NIMBO_SMBUS_SOCKET", "/nonexistent/smbus.sock", 1);
  PLSocket socket;
  EXPECT_EQ(socket.setup(), 0);
  PLSocketState::expectFresh(socket);
}

TEST_F(PLSocketTest, ACallInSimulationLooksForAServiceAndFailsWithoutOne) {
  ::setenv("SIMULATION_VMID", "1", 1);
  ::setenv("NIMBO_SMBUS_SOCKET", "/nonexistent/smbus.sock", 1);
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  const auto outcome = call(socket, kRead);
  EXPECT_LT(outcome.result, 0);
  EXPECT_EQ(outcome.error, ENOENT);
  EXPECT_EQ(outcome.response, nullptr);
}

TEST_F(PLSocketTest, HandsTheAnswerBack) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  const auto outcome = call(socket, kRead);
  ASSERT_EQ(outcome.result, 0);
  ASSERT_EQ(outcome.response->response_size(), 1);
  EXPECT_EQ(outcome.response->response(0).data(), "\x2A");
}

TEST_F(PLSocketTest, RequestsShareOneConnection) {
  ScriptedService service;
  PLSocket socket;
  for (int i = 0; i < 5; ++i) {
    service.expect(kRead, answer(kByteRead));
    service.expect(kWrite, answer("response {}"));
    EXPECT_EQ(call(socket, kRead).response->response(0).data(), "\x2A");
    EXPECT_EQ(call(socket, kWrite).response->response(0).data(), "");
  }
  EXPECT_EQ(service.connections(), 1U);
}

TEST_F(PLSocketTest, AFailedTransactionIsAnAnswerLikeAnother) {
  ScriptedService service;
  service.expect(kRead, answer("failed: true reason: 'request 0: no such device'"));
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  EXPECT_EQ(call(socket, kRead).response->reason(), "request 0: no such device");
  EXPECT_EQ(call(socket, kRead).result, 0);
  EXPECT_EQ(service.connections(), 1U);
}

TEST_F(PLSocketTest, ARestartedServiceIsFoundAgainAndHasTheRequestOnce) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  service.expect(kWrite, answer("response {}"));
  PLSocket socket;
  ASSERT_EQ(call(socket, kRead).result, 0);
  service.restart();
  EXPECT_EQ(call(socket, kWrite).result, 0);
  EXPECT_EQ(service.requests().size(), 2U);
}

TEST_F(PLSocketTest, AServiceThatIsGoneFailsTheCallAndOneThatCameBackAnswersTheNext) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  service.stop();
  EXPECT_EQ(call(socket, kRead).error, ENOENT);
  service.start();
  EXPECT_EQ(call(socket, kRead).result, 0);
}

TEST_F(PLSocketTest, AForkedChildOpensAConnectionOfItsOwn) {
  ScriptedService service;
  service.expect(kRead, answer(kByteRead));
  service.expect(kWrite, answer("response {}"));
  service.expect(kRead, answer(kByteRead));
  PLSocket socket;
  ASSERT_EQ(call(socket, kRead).result, 0);
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(call(socket, kWrite).result == 0 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(call(socket, kRead).result, 0);
  EXPECT_EQ(service.connections(), 2U);
}

TEST_F(PLSocketTest, AnExecutedProgramInheritsNoConnection) {
  ScriptedService service;
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  EXPECT_EQ(::fcntl(PLSocketState::descriptor(socket), F_GETFD), FD_CLOEXEC);
}

TEST_F(PLSocketTest, ItsEndDeletesTheWatcherAndThenClosesTheDescriptor) {
  ScriptedService service;
  {
    PLSocket socket;
    ASSERT_EQ(socket.setup(), 0);
    watcherDeleted.watched = fileOf(socket);
    PLSocketState::watch(socket, 0x1234);
  }
  EXPECT_EQ(watcherDeleted.handle, 0x1234U);
  EXPECT_TRUE(watcherDeleted.watchedWasOpen);
  EXPECT_FALSE(isOpen(watcherDeleted.watched));
}

TEST_F(PLSocketTest, WithoutAWatcherTheHostIsNotAsked) {
  { PLSocket socket; }
  EXPECT_FALSE(watcherDeleted.watchedWasOpen);
  EXPECT_EQ(watcherDeleted.handle, 0U);
}

}  // namespace
