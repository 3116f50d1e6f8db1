// SPDX-License-Identifier: Apache-2.0
//
// The client's end of the service's control socket: a request, a JSON object on a line, and its
// answer.
#pragma once

#include <stdexcept>
#include <string>

#include <rapidjson/document.h>

namespace Nimbo {

// The service is not to be had, or has refused the request. what() is for the operator.
class ControlError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// `given` if it is not empty, else NIMBO_CONTROL_SOCKET, else beside the socket of the service's
// clients.
std::string controlPath(const std::string& given);

class ControlClient {
 public:
  // Connects. Throws ControlError.
  explicit ControlClient(const std::string& path);
  ~ControlClient();
  ControlClient(const ControlClient&) = delete;
  ControlClient& operator=(const ControlClient&) = delete;

  // Throws ControlError for an answer that says no, with its words.
  rapidjson::Document ask(const std::string& request);

  // The text of the last answer.
  const std::string& answer() const { return answer_; }

 private:
  void send(std::string_view line);
  void receive();

  std::string path_;
  int socket_;
  std::string answer_;
};

}  // namespace Nimbo
