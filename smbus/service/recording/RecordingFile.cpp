// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordingFile.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace SmbusService::Recording {

namespace {

constexpr mode_t kMode = 0640;
constexpr size_t kAtOnce = 64 * 1024;  // bytes gathered for one write

int putAway(const std::string& path) {
  const std::string older = path + ".1";
  return ::rename(path.c_str(), older.c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

}  // namespace

RecordingFile::RecordingFile(std::string path, size_t mostBytes, FirstLine firstLine)
    : path_(std::move(path)), mostBytes_(mostBytes / 2), firstLine_(std::move(firstLine)) {
  if (const int error = begin()) {
    throw RecordingError(
        fmt::format("{}: the recording cannot be written: {}; name a file in a directory that the "
                    "service may write to",
                    path_, std::generic_category().message(error)));
  }
}

int RecordingFile::begin() {
  file_.close();
  if (const int error = putAway(path_)) {
    return error;
  }
  file_ = Descriptor(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
  if (!file_.valid()) {
    return errno;
  }
  const std::string line = firstLine_();
  written_ = 0;
  firstLineBytes_ = line.size();
  full_ = false;
  const int error = write(line);
  if (error != 0) {  // a file without its first line must not push out the older one
    file_.close();
    ::unlink(path_.c_str());
  }
  return error;
}

// Leaves the file as it was when not all can be written.
int RecordingFile::write(std::string_view bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t now = ::write(file_.get(), bytes.data() + done, bytes.size() - done);
    if (now < 0 && errno != EINTR) {
      const int error = errno;
      if (::ftruncate(file_.get(), static_cast<off_t>(written_)) == 0) {
        ::lseek(file_.get(), static_cast<off_t>(written_), SEEK_SET);
      }
      return error;
    }
    done += now > 0 ? static_cast<size_t>(now) : 0;
  }
  written_ += bytes.size();
  return 0;
}

void RecordingFile::append(std::string_view line, uint64_t transactions) {
  if (firstLineBytes_ + line.size() > mostBytes_) {
    lost_ += transactions;
    return;
  }
  if (written_ + pending_.size() + line.size() > mostBytes_) {
    flush();
    full_ = true;
  }
  pending_ += line;
  pendingTransactions_ += transactions;
  if (pending_.size() >= kAtOnce) {
    flush();
  }
}

void RecordingFile::flush() {
  if (pending_.empty()) {
    return;
  }
  const int error = !file_.valid() || full_ ? begin() : 0;
  error_ = error != 0 ? error : write(pending_);
  if (error_ != 0) {
    lost_ += pendingTransactions_;
  }
  pending_.clear();
  pendingTransactions_ = 0;
}

uint64_t RecordingFile::takeLost() { return std::exchange(lost_, 0); }

}  // namespace SmbusService::Recording
