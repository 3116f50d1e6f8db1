// SPDX-License-Identifier: Apache-2.0
#include "test/support/SmbusdProcess.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace Doubles {

namespace {

constexpr timeval kReadyWithin{60, 0};
constexpr std::string_view kReady = "READY=1";

int checked(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return result;
}

std::filesystem::path newDirectory() {
  std::string pattern = std::filesystem::temp_directory_path() / "nimbo-smbusd-XXXXXX";
  checked(::mkdtemp(pattern.data()) == nullptr ? -1 : 0, pattern.c_str());
  return pattern;
}

// The receiving end of service notification (sd_notify(3)).
int notificationSocket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  std::filesystem::remove(path);
  const int fd = checked(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket");
  checked(::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
  checked(::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &kReadyWithin, sizeof kReadyWithin),
          "setsockopt");
  return fd;
}

}  // namespace

SmbusdProcess::SmbusdProcess(std::string_view configuration, std::string_view board)
    : directory_(newDirectory()) {
  std::ofstream(path("smbusd.json")) << configuration;
  std::ofstream(path("virtual-board.json")) << board;
  ::setenv("NIMBO_SMBUS_SOCKET", path("smbus.sock").c_str(), 1);
  start();
}

SmbusdProcess::~SmbusdProcess() {
  stop();
  std::filesystem::remove_all(directory_);
}

void SmbusdProcess::start() {
  const int notifications = notificationSocket(path("notify"));
  pid_ = checked(::fork(), "fork");
  if (pid_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int log = ::open(path("log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(log, STDERR_FILENO);
    ::setenv("NOTIFY_SOCKET", path("notify").c_str(), 1);
    ::execl(NIMBO_BUILT_SMBUSD, "smbusd", "--config", path("smbusd.json").c_str(), "--socket",
            path("smbus.sock").c_str(), nullptr);
    ::_exit(127);
  }
  awaitReady(notifications);
}

void SmbusdProcess::awaitReady(int notifications) {
  char text[256];
  const ssize_t length = ::recv(notifications, text, sizeof text, 0);
  ::close(notifications);
  if (length < 0 || std::string_view(text, static_cast<size_t>(length)).find(kReady) != 0) {
    end(SIGKILL);
    throw std::runtime_error("smbusd does not serve:\n" + log());
  }
}

void SmbusdProcess::stop() { end(SIGTERM); }

void SmbusdProcess::kill() { end(SIGKILL); }

void SmbusdProcess::end(int signal) {
  if (pid_ != 0) {
    ::kill(pid_, signal);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }
}

std::string SmbusdProcess::log() const {
  std::ifstream in(directory_ / "log");
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace Doubles
