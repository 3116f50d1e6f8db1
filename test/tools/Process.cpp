// SPDX-License-Identifier: Apache-2.0
#include "test/tools/Process.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace TestSupport {

namespace {

std::string contents(int fd) {
  std::string text;
  std::array<char, 4096> piece;
  ::lseek(fd, 0, SEEK_SET);
  for (ssize_t size = 0; (size = ::read(fd, piece.data(), piece.size())) > 0;) {
    text.append(piece.data(), static_cast<size_t>(size));
  }
  return text;
}

[[noreturn]] void become(const std::vector<std::string>& command,
                         const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) {
    value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
  }
  std::vector<char*> arguments;
  for (const std::string& word : command) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  ::execv(arguments[0], arguments.data());
  ::_exit(127);
}

}  // namespace

Process::Process(const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment)
    : err_(::memfd_create("stderr", MFD_CLOEXEC)) {
  std::array<int, 2> pipe{};
  if (err_ < 0 || ::pipe2(pipe.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  pid_ = ::fork();
  if (pid_ == 0) {
    ::dup2(pipe[1], STDOUT_FILENO);
    ::dup2(err_, STDERR_FILENO);
    become(command, environment);
  }
  ::close(pipe[1]);
  out_ = pipe[0];
}

Process::~Process() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  ::close(out_);
  ::close(err_);
}

bool Process::readLine(std::string& line) {
  std::array<char, 4096> piece;
  size_t end = 0;
  while ((end = pending_.find('\n')) == std::string::npos) {
    const ssize_t size = ::read(out_, piece.data(), piece.size());
    if (size <= 0) {
      return false;
    }
    pending_.append(piece.data(), static_cast<size_t>(size));
  }
  line = pending_.substr(0, end);
  pending_.erase(0, end + 1);
  return true;
}

// A process that did not start has no number of its own: 0 and -1 stand for many others.
void Process::signal(int number) const {
  if (pid_ > 0) {
    ::kill(pid_, number);
  }
}

bool Process::blocksSignals() const {
  std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("SigBlk:")) {
      return line.find_first_of("123456789abcdef", 7) != std::string::npos;
    }
  }
  return false;
}

Result Process::finish() {
  Result result;
  for (std::string line; readLine(line);) {
    result.out += line + "\n";
  }
  result.out += pending_;
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
  result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.err = contents(err_);
  return result;
}

Result run(const std::vector<std::string>& command,
           const std::map<std::string, std::string>& environment) {
  return Process(command, environment).finish();
}

}  // namespace TestSupport
