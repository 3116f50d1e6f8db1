// SPDX-License-Identifier: Apache-2.0
//
// The scripted double of the SMBus service: a thread that listens at a socket of its own, expects
// an exact sequence of requests and answers each as it was told.
//
//   ScriptedService service;
//   service.expect("request { type: Read addr: 0x2000000005 size: 1 }",
//                  answer("response { data: '\\x07' }"));
//   ... the code under test ...          // the service's end checks that the script is used up
//
// Requests are compared field by field with the text given. One that is not next in the script is
// answered as failed, and reported as a test failure when the service ends. The steps are taken in
// order, whichever connection a request comes on. All functions are for the test's thread.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "NimboUtil/Smbus.pb.h"
#include "test/support/Reply.hpp"

namespace Doubles {

class ScriptedService {
 public:
  // Listens, and points NIMBO_SMBUS_SOCKET at itself.
  ScriptedService();
  ~ScriptedService();
  ScriptedService(const ScriptedService&) = delete;
  ScriptedService& operator=(const ScriptedService&) = delete;

  void expect(std::string_view requestText, Reply reply);
  void expectAny(Reply reply);
  // The next connection is closed when that many bytes of a request have been read.
  void cutNextConnectionAfter(size_t bytes);

  // Sends bytes that nobody asked for on the newest connection, which must be open.
  void sendUnasked(std::string bytes);

  void stop();   // closes all connections and the listener, and removes the socket
  void start();  // listens again at the same path
  void restart();

  // Blocks until so many requests in all were dealt with; a late reply counts as that.
  void awaitRequests(size_t count);

  [[nodiscard]] std::string path() const;
  [[nodiscard]] std::vector<Smbus::TransactionRequest> requests() const;  // all so far
  [[nodiscard]] size_t connections() const;                               // accepted so far

 private:
  struct Step {
    std::optional<Smbus::TransactionRequest> request;  // none: any will do
    Reply reply;
  };
  struct Connection {
    int fd = -1;
    std::optional<size_t> cutAfter = {};
    std::string received = {};
    Reply late = {};
    bool open = true;
  };

  void serve();
  void accept();
  void read(Connection& connection);
  void hangUp(Connection& connection);
  void takeFrames(Connection& connection);
  void handle(Connection& connection, const Smbus::TransactionRequest& request);
  Reply nextReply(const Smbus::TransactionRequest& request);
  void sendLateReplies();
  void closeAll();

  std::filesystem::path directory_;
  int listener_ = -1;
  int wakeUp_ = -1;  // an eventfd: stop
  std::thread thread_;
  std::list<Connection> open_;  // the service's thread alone, and so is this:
  std::list<Connection> late_;  // connections that owe a late reply; no longer read

  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::deque<Step> script_;
  std::optional<size_t> cutNext_;
  int newest_ = -1;
  std::vector<Smbus::TransactionRequest> requests_;
  std::vector<std::string> unexpected_;
  size_t dealtWith_ = 0;
  size_t connections_ = 0;
};

}  // namespace Doubles
