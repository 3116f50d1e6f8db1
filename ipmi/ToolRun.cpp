// SPDX-License-Identifier: Apache-2.0
#include "ipmi/ToolRun.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "ipmi/Reading.hpp"

namespace IpmiPlugin {

namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds kDeathWithin{2000};  // of a kill

std::string reason(int error) { return std::generic_category().message(error); }

class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  void reset(int fd) {
    close();
    fd_ = fd;
  }
  void close() {
    if (fd_ >= 0) {
      ::close(fd_);
      fd_ = -1;
    }
  }
  [[nodiscard]] int get() const { return fd_; }

 private:
  int fd_;
};

// One of the program's outputs; the program's end lives until the program is started.
struct Output {
  Output() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
      throw ReadError("no pipe: " + reason(errno));
    }
    ours.reset(ends[0]);
    theirs.reset(ends[1]);
    ::fcntl(ends[1], F_SETFL, 0);  // programs expect outputs that block
  }

  // Takes what there is; false when it has become too much.
  bool drain() {
    std::array<char, 4096> piece;
    ssize_t size = 0;
    while ((size = ::read(ours.get(), piece.data(), piece.size())) > 0) {
      text.append(piece.data(), static_cast<size_t>(size));
      if (text.size() > ToolRunner::kMostOutput) {
        return false;
      }
    }
    if (size == 0) {
      ours.close();
    }
    return true;
  }

  Descriptor ours;
  Descriptor theirs;
  std::string text;
};

struct SpawnActions {
  SpawnActions() { ::posix_spawn_file_actions_init(&value); }
  ~SpawnActions() { ::posix_spawn_file_actions_destroy(&value); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  posix_spawn_file_actions_t value{};
};

struct SpawnAttributes {
  SpawnAttributes() { ::posix_spawnattr_init(&value); }
  ~SpawnAttributes() { ::posix_spawnattr_destroy(&value); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  posix_spawnattr_t value{};
};

// Signals as a program finds them at a shell, and a group of its own so that what it starts dies
// with it.
void setAttributes(posix_spawnattr_t& attributes) {
  sigset_t none;
  sigset_t all;
  ::sigemptyset(&none);
  ::sigfillset(&all);
  ::posix_spawnattr_setsigmask(&attributes, &none);
  ::posix_spawnattr_setsigdefault(&attributes, &all);
  ::posix_spawnattr_setpgroup(&attributes, 0);
  ::posix_spawnattr_setflags(
      &attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
}

void setDescriptors(posix_spawn_file_actions_t& actions, const Output& out, const Output& err) {
  ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(&actions, out.theirs.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_adddup2(&actions, err.theirs.get(), STDERR_FILENO);
  ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

pid_t spawn(const std::vector<std::string>& command, const Output& out, const Output& err) {
  SpawnAttributes attributes;
  setAttributes(attributes.value);
  SpawnActions actions;
  setDescriptors(actions.value, out, err);
  std::vector<char*> arguments;
  for (const std::string& word : command) {
    arguments.push_back(const_cast<char*>(word.c_str()));
  }
  arguments.push_back(nullptr);
  char locale[] = "LC_ALL=C";
  char path[] = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
  char* environment[] = {locale, path, nullptr};
  pid_t pid = 0;
  if (const int error = ::posix_spawn(&pid, arguments[0], &actions.value, &attributes.value,
                                      arguments.data(), environment)) {
    throw ReadError(command[0] + " cannot be run: " + reason(error));
  }
  return pid;
}

int millisecondsUntil(SteadyClock::time_point when) {
  const auto left = std::chrono::ceil<milliseconds>(when - SteadyClock::now());
  return static_cast<int>(std::max(left, milliseconds(0)).count());
}

}  // namespace

// A program that runs. Its end shows on a descriptor, so that what it leaves behind with its
// outputs open is not waited for.
class ToolRunner::Child {
 public:
  explicit Child(const std::vector<std::string>& command)
      : name_(command[0].substr(command[0].rfind('/') + 1)), pid_(spawn(command, out_, err_)) {
    // Debian 12's declaration of pidfd_open(2) is not fit for C++.
    end_.reset(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
    out_.theirs.close();
    err_.theirs.close();
  }

  // Throws ReadError when it has not ended within its bounds.
  void attend(SteadyClock::time_point deadline, const Stop& stop) {
    for (bool ended = false; !ended;) {
      std::array<pollfd, 4> watched = {{{out_.ours.get(), POLLIN, 0},
                                        {err_.ours.get(), POLLIN, 0},
                                        {end_.get(), POLLIN, 0},
                                        {stop.fd(), POLLIN, 0}}};
      const int ready = ::poll(watched.data(), watched.size(), millisecondsUntil(deadline));
      ended = watched[2].revents != 0;
      if (!out_.drain() || !err_.drain()) {
        throw ReadError(name_ + " printed too much");
      }
      // Without a descriptor the end of the outputs has to do: a host that has its children reaped
      // by the kernel may have lost this one already.
      ended |= end_.get() < 0 && out_.ours.get() < 0 && err_.ours.get() < 0;
      if (watched[3].revents != 0) {
        throw ReadError(name_ + " was stopped");
      }
      if (ready == 0) {
        throw ReadError(name_ + " did not end in time and was killed");
      }
    }
  }

  void kill() const { ::kill(-pid_, SIGKILL); }

  // False: it is still there after that time.
  [[nodiscard]] bool endsWithin(milliseconds time) const {
    pollfd end{end_.get(), POLLIN, 0};
    return ::poll(&end, 1, static_cast<int>(time.count())) > 0;
  }

  // Of a program that has ended; what it has started and left goes too. A host that reaps every
  // child may have been quicker; how the program ended is then unknown, and what it printed tells.
  ToolResult result() {
    kill();
    int status = 0;
    if (::waitpid(pid_, &status, 0) < 0) {
      status = 0;
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, std::move(out_.text),
            std::move(err_.text)};
  }

  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  std::string name_;
  Output out_;
  Output err_;
  pid_t pid_;
  Descriptor end_;
};

ToolResult ToolRunner::run(const std::vector<std::string>& command, const Stop& stop) {
  reapLateOnes();
  Child child(command);
  try {
    child.attend(SteadyClock::now() + limit_, stop);
  } catch (...) {
    child.kill();
    if (child.endsWithin(kDeathWithin)) {
      child.result();
    } else {
      late_.push_back(child.pid());
    }
    throw;
  }
  return child.result();
}

void ToolRunner::reapLateOnes() {
  std::erase_if(late_, [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
}

}  // namespace IpmiPlugin
