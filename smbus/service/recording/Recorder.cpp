// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Recorder.hpp"

#include <fmt/format.h>

#include <system_error>
#include <utility>

namespace SmbusService::Recording {

namespace {

// How long an answered transaction is in memory only.
constexpr Milliseconds kPeriod(100);

bool parse(std::string_view bytes, google::protobuf::MessageLite& message) {
  return message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

std::chrono::nanoseconds systemUtc() { return std::chrono::system_clock::now().time_since_epoch(); }

Recorder::Recorder(RecorderSettings settings, Clock& clock, Log& log, UtcClock utc)
    : settings_(std::move(settings)),
      clock_(clock),
      log_(log),
      utc_(std::move(utc)),
      queue_(settings_.queueBytes, clock),
      lines_(settings_.buses),
      file_(settings_.path, settings_.fileBytes, [this] { return firstLine(); }) {}

Moment Recorder::momentOf(TimePoint time) const {
  const std::chrono::nanoseconds monotonic = time.time_since_epoch();
  return {monotonic + utcAhead_, monotonic};
}

std::string Recorder::firstLine() {
  const TimePoint now = clock_.now();
  utcAhead_ = utc_() - now.time_since_epoch();
  LineWriter lines(settings_.buses);
  return std::string(lines.header({settings_.service, momentOf(now), settings_.buses}));
}

void Recorder::writeOut() {
  queue_.take(batch_);
  utcAhead_ = utc_() - clock_.now().time_since_epoch();  // UTC may be set at any time
  Entry entry;
  while (batch_.next(entry)) {
    if (missing_ > 0) {
      writeGap(std::exchange(missing_, 0));
    }
    write(entry);
  }
  missing_ += batch_.dropped();
  if (missing_ > 0) {
    writeGap(std::exchange(missing_, 0));
  }
  file_.flush();
  missing_ += file_.takeLost();
  tell();
}

void Recorder::write(const Entry& entry) {
  // Both were messages when they were put.
  (void)parse(entry.request, record_.request);
  (void)parse(entry.response, record_.response);
  record_.number = entry.number;
  record_.begun = momentOf(entry.begun);
  record_.duration = entry.ended - entry.begun;
  record_.client = entry.client;
  record_.failedRequest = entry.failedRequest;
  file_.append(lines_.record(record_), 1);
}

void Recorder::writeGap(uint64_t transactions) {
  file_.append(lines_.gap({momentOf(clock_.now()), transactions}), transactions);
}

void Recorder::tell() {
  const bool failed = file_.error() != 0;
  if (failed && !failing_) {
    log_.line(Level::kError,
              fmt::format("{}: the recording cannot be written: {}; the service goes "
                          "on, and so does the recording once there is room",
                          settings_.path, std::generic_category().message(file_.error())));
  } else if (!failed && failing_) {
    log_.line(Level::kNotice, fmt::format("{}: the recording goes on", settings_.path));
  }
  failing_ = failed;
}

RecorderThread::RecorderThread(Recorder& recorder, Clock& clock)
    : recorder_(recorder), clock_(clock), thread_([this] { run(); }) {}

RecorderThread::~RecorderThread() {
  recorder_.stopWaiting();
  thread_.join();
}

void RecorderThread::run() {
  while (recorder_.waitForWork(clock_.now() + kPeriod)) {
    recorder_.writeOut();
  }
  recorder_.writeOut();
}

}  // namespace SmbusService::Recording
