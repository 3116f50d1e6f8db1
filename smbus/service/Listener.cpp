// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Listener.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace SmbusService {

namespace {

constexpr Milliseconds kPauseWithoutDescriptors{100};

[[noreturn]] void fail(const std::string& what, const char* remedy) {
  throw ListenError(
      fmt::format("{}: {}; {}", what, std::generic_category().message(errno), remedy));
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    throw ListenError(fmt::format("socket path {} is longer than {} bytes; choose a shorter one",
                                  path, sizeof address.sun_path - 1));
  }
  path.copy(address.sun_path, path.size());
  return address;
}

Descriptor streamSocket() {
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.valid()) {
    fail("cannot make a socket", "raise the limit of open files");
  }
  return socket;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

bool somebodyListens(const sockaddr_un& address) {
  return ::connect(streamSocket().get(), generic(address), sizeof address) == 0;
}

void removeStale(const std::string& path, const sockaddr_un& address) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    return;
  }
  if (!S_ISSOCK(status.st_mode)) {
    throw ListenError(
        fmt::format("{} exists and is not a socket; remove it or choose another path", path));
  }
  if (somebodyListens(address)) {
    throw ListenError(
        fmt::format("a service listens at {} already; stop it or choose another path", path));
  }
  ::unlink(path.c_str());
}

void setGroup(const SocketSettings& settings) {
  if (settings.group.empty()) {
    return;
  }
  const group* found = ::getgrnam(settings.group.c_str());
  if (found == nullptr) {
    throw ListenError(fmt::format("there is no group {} for the socket; create it or name another",
                                  settings.group));
  }
  if (::chown(settings.path.c_str(), static_cast<uid_t>(-1), found->gr_gid) != 0) {
    fail("cannot give " + settings.path + " to group " + settings.group,
         "run the service as root or as a member of the group");
  }
}

// Nobody may come in before the mode and the group are right.
void bindClosed(int socket, const SocketSettings& settings, const sockaddr_un& address) {
  const mode_t before = ::umask(0777);
  const int bound = ::bind(socket, generic(address), sizeof address);
  ::umask(before);
  if (bound != 0) {
    fail("cannot make the socket " + settings.path,
         "see that its directory exists and can be written");
  }
}

Descriptor spareDescriptor() { return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

bool outOfDescriptors(int error) { return error == EMFILE || error == ENFILE; }

Peer peerOf(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size);
  return {credentials.pid, credentials.uid, credentials.gid};
}

Descriptor acceptFrom(int listening) {
  return Descriptor(::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC));
}

}  // namespace

// Delegates, so that the destructor removes the socket when a later step fails.
ListeningSocket::ListeningSocket(const SocketSettings& settings) : ListeningSocket(streamSocket()) {
  const sockaddr_un address = addressOf(settings.path);
  removeStale(settings.path, address);
  bindClosed(socket_.get(), settings, address);
  path_ = settings.path;
  setGroup(settings);
  if (::chmod(path_.c_str(), settings.mode) != 0 || ::listen(socket_.get(), SOMAXCONN) != 0) {
    fail("cannot listen at " + path_, "see that its directory can be written");
  }
}

ListeningSocket::~ListeningSocket() {
  if (!path_.empty()) {
    ::unlink(path_.c_str());
  }
}

Acceptor::Acceptor(int listening, Clock& clock, Log& log, Accepted accepted)
    : listening_(listening),
      clock_(clock),
      log_(log),
      accepted_(std::move(accepted)),
      spare_(spareDescriptor()) {
  ::fcntl(listening_, F_SETFL, ::fcntl(listening_, F_GETFL) | O_NONBLOCK);
}

void Acceptor::run(int stop) {
  std::array<pollfd, 2> watched{pollfd{stop, POLLIN, 0}, pollfd{listening_, POLLIN, 0}};
  for (;;) {
    const int ready = ::poll(watched.data(), watched.size(), -1);
    if (ready > 0 && watched[0].revents != 0) {
      return;
    }
    if (ready > 0) {
      acceptOne();
    }
  }
}

void Acceptor::acceptOne() {
  Descriptor socket = acceptFrom(listening_);
  if (socket.valid()) {
    const Peer peer = peerOf(socket.get());
    accepted_(std::move(socket), peer);
  } else if (outOfDescriptors(errno) || errno == ENOMEM || errno == ENOBUFS) {
    turnOneAway(errno);
  }  // else the client has gone again
}

void Acceptor::turnOneAway(int error) {
  log_.line(Level::kError,
            fmt::format("a client is turned away: {}", std::generic_category().message(error)));
  spare_.close();
  const bool gone = acceptFrom(listening_).valid();  // and closed at once
  spare_ = spareDescriptor();
  if (!gone || !spare_.valid()) {
    clock_.sleep(kPauseWithoutDescriptors);
  }
}

}  // namespace SmbusService
