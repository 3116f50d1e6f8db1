// SPDX-License-Identifier: Apache-2.0
//
// The client's end of the connection to the SMBus service.
//
// One object is one connection over a Unix-domain stream socket; its path is the environment
// variable NIMBO_SMBUS_SOCKET, or /run/nimbo/smbus.sock. In simulation (SIMULATION_VMID is set)
// there is no service, and setup() succeeds without one.
//
// Used from one thread. It needs no care across fork(): a child that uses the object opens a
// connection of its own, and an executed program inherits none. It never raises SIGPIPE.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <list>
#include <string>

#include "NimboUtil/Smbus.pb.h"
#include "pl/pl_host.h"

namespace PlatformLibrary {

class Deadline;

class PLSocket {
 public:
  PLSocket() = default;

  // Removes the watcher, if there is one and the host can, and closes the descriptor. It stands
  // here so that the program or library which owns the socket looks the host's service up itself.
  ~PLSocket() {
    if (fdWatcher_ != 0 && pl_fd_watcher_delete != nullptr) {
      pl_fd_watcher_delete(fdWatcher_);
    }
    ::close(fd_);  // -1 is no descriptor, and its error is nobody's
  }

  PLSocket(const PLSocket&) = delete;
  PLSocket& operator=(const PLSocket&) = delete;

  // Connects to the service. Returns 0, or a negative value with errno set; it may be called again
  // and then begins a new connection.
  __attribute__((visibility("default"))) int setup();

  // Sends the request and blocks until its answer has come. Returns 0 with a new answer in
  // *response, which the caller deletes, or a negative value with errno set and *response null.
  // The request is not changed; both pointers must not be null.
  //
  // Without a usable connection a new one is opened first, so a service that was restarted is
  // found again. The request goes out a second time only if no byte of it had reached the socket;
  // after any failure the next call begins a new connection. The whole call takes at most 30
  // seconds, or NIMBO_SMBUS_TIMEOUT_MS milliseconds if that variable holds a number above 0.
  //
  //   EMSGSIZE            the request is above 1 MiB; nothing was sent
  //   ENOENT, ECONNREFUSED, ENAMETOOLONG, ...  as connect(2): there is no service; nothing was sent
  //   ECONNRESET          the connection broke; the service may or may not have had the request
  //   ETIMEDOUT           there was no answer in time; likewise
  //   EPROTO              the answer is above 1 MiB or no message; likewise
  __attribute__((visibility("default"))) int sendRequestWait(Smbus::TransactionRequest* request,
                                                             Smbus::TransactionResponse** response);

 private:
  friend class PLSocketState;  // the tests look at a new object

  bool frame(const Smbus::TransactionRequest& request);
  bool deliver(const Deadline& deadline);
  bool usable() const;
  bool connect(const Deadline& deadline);
  bool send(const Deadline& deadline);
  bool receive(const Deadline& deadline);
  bool takeHeader();
  bool settles(const Smbus::TransactionRequest& request,
               const Smbus::TransactionResponse& answer) const;
  int fail();
  void disconnect();

  // The order and the first values are fixed: whoever includes this header makes the object.
  int32_t fd_ = -1;
  uint64_t fdWatcher_ = 0;  // the host's handle; the library itself registers none
  uint64_t owner_ = 0;      // tells the process that opened fd_ from its children
  bool settled_ = true;     // no request is under way: nothing more is due on fd_
  std::string incoming_ = std::string(4, '\0');  // the answer's frame; it grows and stays
  uint32_t received_ = 0;                        // bytes of incoming_ that have come
  uint32_t sent_ = 0;                            // bytes of outgoing_ that the socket took
  uint32_t awaited_ = 4;  // length of the answer's frame: the header's own until that is there
  std::string outgoing_;  // the request's frame
  std::list<std::string> queue_;  // answers not asked for; a client that waits for each keeps none
};

}  // namespace PlatformLibrary
