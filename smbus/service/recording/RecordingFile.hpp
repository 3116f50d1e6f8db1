// SPDX-License-Identifier: Apache-2.0
//
// The files of a recording: PATH, and what stood there before in PATH.1. When PATH has taken half
// of what both may take, it becomes PATH.1 and a new one begins. For one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "smbus/service/Descriptor.hpp"

namespace SmbusService::Recording {

// what() says which file cannot be written, why, and what to do.
class RecordingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class RecordingFile {
 public:
  // The first line of each file, with its end; asked for when one begins.
  using FirstLine = std::function<std::string()>;

  // Begins a file; one that is there becomes PATH.1. Throws RecordingError.
  RecordingFile(std::string path, size_t mostBytes, FirstLine firstLine);

  // Adds a line with its end, which tells of so many transactions; it may be in memory until
  // flush(). One that is longer than a file may be is lost.
  void append(std::string_view line, uint64_t transactions);
  void flush();

  // 0, or the errno value of the last attempt to write. What could not be written is lost, whole
  // lines of it, and what comes later is tried anew.
  [[nodiscard]] int error() const { return error_; }
  // Transactions that were lost since this was asked last.
  [[nodiscard]] uint64_t takeLost();

 private:
  [[nodiscard]] int begin();
  [[nodiscard]] int write(std::string_view bytes);

  const std::string path_;
  const size_t mostBytes_;  // of one file
  const FirstLine firstLine_;
  Descriptor file_;
  size_t written_ = 0;
  size_t firstLineBytes_ = 0;
  bool full_ = false;
  std::string pending_;
  uint64_t pendingTransactions_ = 0;
  uint64_t lost_ = 0;
  int error_ = 0;
};

}  // namespace SmbusService::Recording
