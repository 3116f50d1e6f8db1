// SPDX-License-Identifier: Apache-2.0
#include "ipmi/CachedHam.hpp"

#include <utility>

#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace IpmiPlugin {

namespace {

constexpr const char* kAirflow = "AIRFLOWDIRECTION_";

}  // namespace

CachedHam::CachedHam(std::string name, std::shared_ptr<Mailbox> mailbox,
                     std::chrono::milliseconds staleAfter, Clock clock)
    : name_(std::move(name)),
      mailbox_(std::move(mailbox)),
      staleAfter_(staleAfter),
      clock_(std::move(clock)) {
  status_ = PL_STATUS_REMOTE;
}

CachedHam::~CachedHam() {
  if (timer_ != 0) {
    Utils::timerDelete(timer_);
  }
}

bool CachedHam::start() {
  timer_ = Utils::timerAdd(fired, this);
  return arm();
}

bool CachedHam::arm() {
  const bool armed = timer_ != 0 && Utils::timerSet(timer_, kTickMilliseconds);
  if (!armed) {
    TRACE(0, "Error: IPMI %s: the host gives no timer, nothing is read", name_.c_str());
  }
  return armed;
}

void CachedHam::fired(void* self) {
  auto* ham = static_cast<CachedHam*>(self);
  ham->refresh();
  ham->arm();
}

void CachedHam::refresh() {
  News news = mailbox_->take();
  if (news.reading) {
    install(std::move(*news.reading));
    hasRead_ = true;
    taken_ = news.taken;
  }
  if (news.failure) {
    mention(*news.failure);
  } else if (news.reading) {
    mentioned_.clear();
  }
  judgeAge();
}

void CachedHam::install(Reading reading) {
  sensors_ = std::move(reading.sensors);
  fru_.clear();
  for (auto& [name, fru] : reading.frus) {
    if (!fru.airflow.empty()) {
      sensors_[kAirflow + name] = std::move(fru.airflow);
    }
    fru_[name] = {std::move(fru.model), std::move(fru.serial)};
  }
}

void CachedHam::judgeAge() {
  const bool fresh = hasRead_ && clock_() - taken_ <= staleAfter_;
  const int32_t status = fresh ? PL_STATUS_OK : PL_STATUS_REMOTE;
  if (status == status_) {
    return;
  }
  status_ = status;
  if (fresh) {
    TRACE(0, "IPMI %s: %zu sensors, %zu FRU records", name_.c_str(), sensors_.size(), fru_.size());
  } else {
    TRACE(0, "Error: IPMI %s: the values are stale", name_.c_str());
  }
}

// A controller that stays away gives the same reason again and again.
void CachedHam::mention(const std::string& failure) {
  if (failure != mentioned_) {
    TRACE(0, "Error: IPMI %s: %s", name_.c_str(), failure.c_str());
    mentioned_ = failure;
  }
}

int CachedHam::fanId(const std::string& key) {
  std::string value;
  return getSensorVal(key, value) == PL_STATUS_FAILED ? PL_STATUS_FAILED : PL_STATUS_OK;
}

int CachedHam::psuId(const std::string& key) {
  FruData data;
  return getFruVal(key, data) == PL_STATUS_FAILED ? PL_STATUS_FAILED : PL_STATUS_OK;
}

int CachedHam::airflowId(const std::string& key) {
  return hasRead_ ? fanId(kAirflow + key) : PL_STATUS_OK;
}

}  // namespace IpmiPlugin
