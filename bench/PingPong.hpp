// SPDX-License-Identifier: Apache-2.0
//
// The least that a call of another process can cost: frames of given sizes back and forth over a
// Unix stream socket, with a blocking send and receive at either end and nothing between.
#pragma once

#include <sys/types.h>

#include <string>

namespace Bench {

class PingPong {
 public:
  PingPong(size_t requestBytes, size_t answerBytes);
  ~PingPong();
  PingPong(const PingPong&) = delete;
  PingPong& operator=(const PingPong&) = delete;

  void call();

 private:
  int fd_;
  pid_t peer_;
  std::string request_;
  std::string answer_;
};

}  // namespace Bench
