// SPDX-License-Identifier: Apache-2.0
//
// Records what the service answers. A serving thread leaves a copy of the bytes in a queue; one
// thread turns them into lines and writes those. A file that cannot be written is told once, and
// what is missing is counted in the recording itself.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "smbus/service/Limits.hpp"
#include "smbus/service/Log.hpp"
#include "smbus/service/recording/LineWriter.hpp"
#include "smbus/service/recording/RecordQueue.hpp"
#include "smbus/service/recording/RecordingFile.hpp"

namespace SmbusService::Recording {

struct RecorderSettings {
  std::string path;
  std::string service;  // its version
  std::vector<BusKey> buses;
  size_t fileBytes = 0;   // of both files
  size_t queueBytes = 0;  // that wait to be written
};

class Recorder {
 public:
  using UtcClock = std::function<std::chrono::nanoseconds()>;  // since 1970

  // Begins the file: throws RecordingError. Clock and log outlive the recorder.
  Recorder(RecorderSettings settings, Clock& clock, Log& log, UtcClock utc);

  // The number of a transaction, to be taken while it holds its buses: so the numbers tell the
  // order on each bus. For any thread.
  [[nodiscard]] uint64_t takeNumber() { return ++lastNumber_; }

  // For any thread. Never waits for a file.
  void put(const Entry& entry) { queue_.put(entry); }

  // For the one thread that writes. Writes all that was put before.
  void writeOut();
  [[nodiscard]] bool waitForWork(TimePoint deadline) { return queue_.wait(deadline); }
  void stopWaiting() { queue_.stop(); }

 private:
  [[nodiscard]] Moment momentOf(TimePoint time) const;
  [[nodiscard]] std::string firstLine();
  void write(const Entry& entry);
  void writeGap(uint64_t transactions);
  void tell();

  const RecorderSettings settings_;
  Clock& clock_;
  Log& log_;
  const UtcClock utc_;
  std::atomic<uint64_t> lastNumber_{0};
  RecordQueue queue_;

  // Of the thread that writes.
  Batch batch_;
  Record record_;
  LineWriter lines_;
  std::chrono::nanoseconds utcAhead_{0};  // of the monotonic clock
  uint64_t missing_ = 0;                  // not yet told in the file
  bool failing_ = false;
  RecordingFile file_;
};

// The thread that writes, until its end.
class RecorderThread {
 public:
  RecorderThread(Recorder& recorder, Clock& clock);
  // Writes what is left.
  ~RecorderThread();
  RecorderThread(const RecorderThread&) = delete;
  RecorderThread& operator=(const RecorderThread&) = delete;

 private:
  void run();

  Recorder& recorder_;
  Clock& clock_;
  std::thread thread_;
};

[[nodiscard]] std::chrono::nanoseconds systemUtc();

}  // namespace SmbusService::Recording
