// SPDX-License-Identifier: Apache-2.0
#include "Ham/IpmiHam.hpp"

#include <algorithm>
#include <cctype>

#include "Utils/Host.hpp"
#include "Utils/NotImplemented.hpp"
#include "pl/pl_status.h"

namespace Ham {

std::map<std::string, IpmiHamFactory> ipmiHams;

namespace {

constexpr int kUnknownName = PL_STATUS_FAILED;

std::string upperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// Copies the entry of a name, if there is one.
template <class Value>
int lookUp(const std::map<std::string, Value>& cache, const std::string& name, int status,
           Value& value) {
  const auto it = cache.find(upperCase(name));
  if (it == cache.end()) {
    return kUnknownName;
  }
  value = it->second;
  return status;
}

}  // namespace

int IpmiHam::fanId(const std::string&) { throw NotImplementedException("fanId"); }
int IpmiHam::psuId(const std::string&) { throw NotImplementedException("psuId"); }
int IpmiHam::airflowId(const std::string&) { throw NotImplementedException("airflowId"); }

int IpmiHam::getSensorVal(const std::string& name, std::string& value) {
  return lookUp(sensors_, name, status_, value);
}

int IpmiHam::getSensorVal(const std::string& name, float* value) {
  std::string text;
  const int status = getSensorVal(name, text);
  if (status == PL_STATUS_OK) {
    *value = std::stof(text);
  }
  return status;
}

int IpmiHam::getSensorVal(const std::string& name, int* value) {
  std::string text;
  const int status = getSensorVal(name, text);
  if (status == PL_STATUS_OK) {
    *value = std::stoi(text);
  }
  return status;
}

int IpmiHam::getFruVal(const std::string& name, FruData& data) {
  return lookUp(fru_, name, status_, data);
}

int IpmiHam::psuPresence(const std::string& name, std::string& out1, std::string& out2) {
  FruData data;
  const int status = getFruVal(name, data);
  if (status == PL_STATUS_OK) {
    out1 = data.second;
    out2 = data.first;
  }
  return status;
}

int IpmiHam::fanPresence(const std::string& name, bool* present) {
  std::string reading;
  const int status = getSensorVal(name, reading);
  *present = status == PL_STATUS_OK;
  TRACE(6, "IpmiHam::fanPresence  '%s' %d %d", name.c_str(), status, *present ? 1 : 0);
  return status;
}

std::shared_ptr<IpmiHam> createIpmiHam(const std::string& type) {
  TRACE(3, "looking for ham %s", type.c_str());
  const auto it = ipmiHams.find(type);
  if (it == ipmiHams.end()) {
    TRACE(0, "ham not found %s", type.c_str());
    return nullptr;
  }
  TRACE(3, "creating  %s factory function", type.c_str());
  std::shared_ptr<IpmiHam> ham = it->second();
  if (ham == nullptr) {
    TRACE(0, "Failed to create ham %s", type.c_str());
  }
  return ham;
}

}  // namespace Ham
