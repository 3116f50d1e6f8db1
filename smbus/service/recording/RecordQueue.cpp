// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordQueue.hpp"

#include <cstring>
#include <type_traits>
#include <utility>

namespace SmbusService::Recording {

namespace {

// What stands before the bytes of an entry.
struct Head {
  Entry entry;  // its views are set when it is taken
  size_t requestBytes;
  size_t responseBytes;
};
static_assert(std::is_trivially_copyable_v<Head>);

}  // namespace

bool Batch::next(Entry& entry) {
  if (position_ == bytes_.size()) {
    return false;
  }
  Head head;
  std::memcpy(&head, bytes_.data() + position_, sizeof head);
  const char* const request = bytes_.data() + position_ + sizeof head;
  entry = head.entry;
  entry.request = {request, head.requestBytes};
  entry.response = {request + head.requestBytes, head.responseBytes};
  position_ += sizeof head + head.requestBytes + head.responseBytes;
  return true;
}

void RecordQueue::put(const Entry& entry) {
  const Head head{entry, entry.request.size(), entry.response.size()};
  const size_t size = sizeof head + head.requestBytes + head.responseBytes;
  const std::lock_guard lock(mutex_);
  const size_t before = bytes_.size();
  // Once something is missing, nothing follows it: the gap has one place.
  if (dropped_ > 0 || size > mostBytes_ - before) {
    ++dropped_;
    return;
  }
  bytes_.append(reinterpret_cast<const char*>(&head), sizeof head);
  bytes_.append(entry.request);
  bytes_.append(entry.response);
  if (before < mostBytes_ / 2 && bytes_.size() >= mostBytes_ / 2) {
    wake_.notify_one();
  }
}

void RecordQueue::take(Batch& batch) {
  batch.bytes_.clear();
  batch.position_ = 0;
  const std::lock_guard lock(mutex_);
  batch.bytes_.swap(bytes_);
  batch.dropped_ = std::exchange(dropped_, 0);
}

bool RecordQueue::wait(TimePoint deadline) {
  std::unique_lock lock(mutex_);
  if (!stopped_ && bytes_.size() < mostBytes_ / 2) {
    clock_.waitUntil(wake_, lock, deadline);
  }
  return !stopped_;
}

void RecordQueue::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  wake_.notify_one();
}

}  // namespace SmbusService::Recording
