// SPDX-License-Identifier: Apache-2.0
#include "test/smbus/service/support/FakeBus.hpp"

#include "smbus/service/OperationKind.hpp"

namespace SmbusService {

namespace {

std::string countingBytes(size_t count) {
  std::string bytes;
  for (size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<char>(0x10 + i));
  }
  return bytes;
}

}  // namespace

int FakeBus::perform(const Operation& operation, std::string& answer) {
  overlapped_ = overlapped_ || underWay_.fetch_add(1) != 0;
  std::unique_lock lock(mutex_);
  waitWhileHung(lock);
  const size_t number = performed_.size();
  performed_.push_back({operation.kind, operation.address, operation.command,
                        std::string(operation.data.begin(), operation.data.end()), operation.pec});
  const size_t bytes =
      operation.kind == OperationKind::kReadBlock ? blockLength : mostAnswer(operation);
  answer = countingBytes(bytes == 0 ? 0 : bytes + static_cast<size_t>(wrongBy));
  const auto failure = failures_.find(number);
  underWay_.fetch_sub(1);
  return failure == failures_.end() ? 0 : failure->second;
}

void FakeBus::waitWhileHung(std::unique_lock<std::mutex>& lock) {
  const auto goesOn = [this] { return performed_.size() < hangsFrom_; };
  if (!goesOn()) {
    ++stuck_;
    changed_.notify_all();
    changed_.wait(lock, goesOn);
    --stuck_;
  }
}

void FakeBus::failAt(size_t n, int error) {
  const std::lock_guard lock(mutex_);
  failures_[performed_.size() + n] = error;
}

void FakeBus::hangAt(size_t n) {
  const std::lock_guard lock(mutex_);
  hangsFrom_ = performed_.size() + n;
}

void FakeBus::resume() {
  const std::lock_guard lock(mutex_);
  hangsFrom_ = SIZE_MAX;
  changed_.notify_all();
}

void FakeBus::waitUntilStuck() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stuck_ > 0; });
}

std::vector<Performed> FakeBus::performed() const {
  const std::lock_guard lock(mutex_);
  return performed_;
}

}  // namespace SmbusService
