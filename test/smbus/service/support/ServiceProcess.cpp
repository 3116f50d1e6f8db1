// SPDX-License-Identifier: Apache-2.0
#include "test/smbus/service/support/ServiceProcess.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace SmbusService {

namespace {

constexpr std::chrono::seconds kPatience(60);
constexpr int kFirstInherited = 3;  // sd_listen_fds(3)

constexpr const char* kBoard = R"({"board": "Test", "buses": [{"name": "b", "chips": [
  {"label": "chip", "model": "register", "address": "0x50", "fill": 65}]}]})";
constexpr const char* kConfiguration = R"({"virtual_board": "board.json", "buses": [
  {"master": "I2C", "bus": 5, "backend": {"virtual": "b"}}]})";

std::filesystem::path freshDirectory() {
  std::string name = testing::TempDir() + "smbusd_XXXXXX";
  return ::mkdtemp(name.data());
}

// A socket for what services tell systemd.
Descriptor notificationSocket(const std::string& path) {
  Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return socket;
}

void redirectErrors(const std::filesystem::path& file) {
  ::dup2(::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
}

void handOver(const Descriptor& listening) {
  ::dup2(listening.get(), kFirstInherited);
  ::setenv("LISTEN_FDS", "1", 1);
  ::setenv("LISTEN_PID", std::to_string(::getpid()).c_str(), 1);
}

}  // namespace

ServiceProcess::ServiceProcess()
    : directory_(freshDirectory()), notifications_(notificationSocket(directory_ / "notify")) {
  writeBoard(kBoard);
  writeConfiguration(kConfiguration);
  listener_ = std::thread([this] { listen(); });
}

ServiceProcess::~ServiceProcess() {
  if (pid_ > 0) {
    signal(SIGKILL);
    (void)wait();
  }
  ::shutdown(notifications_.get(), SHUT_RDWR);
  listener_.join();
  std::filesystem::remove_all(directory_);
}

void ServiceProcess::listen() {
  std::array<char, 512> text{};
  for (;;) {
    const ssize_t size = ::recv(notifications_.get(), text.data(), text.size(), 0);
    if (size <= 0) {
      return;
    }
    const std::scoped_lock lock(mutex_);
    heard_.emplace_back(text.data(), static_cast<size_t>(size));
    told_.notify_all();
  }
}

void ServiceProcess::writeConfiguration(const std::string& text) const {
  std::ofstream(configurationPath()) << text;
}

void ServiceProcess::writeBoard(const std::string& text) const {
  std::ofstream(directory_ / "board.json") << text;
}

void ServiceProcess::launch(const std::string& option, const std::string& argument,
                            const Descriptor* activation) {
  const char* program = std::getenv("SMBUSD");
  ASSERT_NE(program, nullptr) << "SMBUSD must name the service's program";
  pid_ = ::fork();
  if (pid_ == 0) {
    redirectErrors(directory_ / "errors");
    ::setenv("NOTIFY_SOCKET", (directory_ / "notify").c_str(), 1);
    ::setenv("NIMBO_SMBUS_SOCKET", socketPath().c_str(), 1);
    if (activation != nullptr) {
      handOver(*activation);
    }
    ::execl(program, "smbusd", option.c_str(), argument.c_str(), nullptr);
    ::_exit(127);
  }
}

void ServiceProcess::start(const Descriptor* activation) {
  launch("--config", configurationPath(), activation);
  std::optional<std::string> said;
  do {
    said = notification();
    ASSERT_TRUE(said) << errors();
  } while (said->find("READY=1") == std::string::npos);
}

int ServiceProcess::run(const std::string& option, const std::string& argument) {
  launch(option, argument, nullptr);
  return wait();
}

// A process that did not start has no number of its own: 0 and -1 stand for many others.
void ServiceProcess::signal(int number) const {
  if (pid_ > 0) {
    ::kill(pid_, number);
  }
}

int ServiceProcess::wait() {
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::optional<std::string> ServiceProcess::notification() {
  std::unique_lock lock(mutex_);
  if (!told_.wait_for(lock, kPatience, [this] { return !heard_.empty(); })) {
    return std::nullopt;
  }
  std::string said = std::move(heard_.front());
  heard_.pop_front();
  return said;
}

std::string ServiceProcess::errors() const {
  std::ifstream file(directory_ / "errors");
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace SmbusService
