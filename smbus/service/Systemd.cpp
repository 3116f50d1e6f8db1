// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Systemd.hpp"

#include <sys/socket.h>
#include <systemd/sd-daemon.h>

#include <stdexcept>

namespace SmbusService::Systemd {

void notifyReady() { sd_notify(0, "READY=1\nSTATUS=serving"); }

void notifyStopping() { sd_notify(0, "STOPPING=1"); }

void notifyAlive() { sd_notify(0, "WATCHDOG=1\nSTATUS=serving"); }

void notifyHung(const std::string& bus) { sd_notify(0, ("STATUS=" + bus + " hangs").c_str()); }

std::optional<Descriptor> inheritedSocket() {
  const int count = sd_listen_fds(1);
  if (count <= 0) {
    return std::nullopt;
  }
  Descriptor socket(SD_LISTEN_FDS_START);
  if (count > 1 || sd_is_socket_unix(socket.get(), SOCK_STREAM, 1, nullptr, 0) <= 0) {
    throw std::runtime_error(
        "systemd handed over something other than one listening Unix stream socket; give "
        "smbusd.socket exactly one ListenStream= with a path");
  }
  return socket;
}

}  // namespace SmbusService::Systemd
