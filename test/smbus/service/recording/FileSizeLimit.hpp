// SPDX-License-Identifier: Apache-2.0
//
// Stands in for a full disk: while it lives, no file of the process grows above a size.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace SmbusService::Recording {

class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);  // a write fails with EFBIG instead
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
};

}  // namespace SmbusService::Recording
