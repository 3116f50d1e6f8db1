// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>

// Thrown by operations that an interface has and an object does not offer. It is not caught in the
// library: asking a device for what it is not is the host's mistake, and is to be seen.
class NotImplementedException : public std::exception {
 public:
  explicit NotImplementedException(const std::string& operation)
      : message_("Not implemented " + operation) {}
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};
