// SPDX-License-Identifier: Apache-2.0
//
// A back-end as a plug-in brings it: a module that is linked to the library and registers itself
// when it is loaded. Its values are what the test says.
#include "Ham/IpmiHam.hpp"

namespace {

class BackEnd : public Ham::IpmiHam {
 public:
  int airflowId(const std::string& key) override { return key == "FRU1" ? 0 : 4; }
};

std::shared_ptr<BackEnd> backEnd() {
  static const auto only = std::make_shared<BackEnd>();
  return only;
}

[[maybe_unused]] const bool kRegistered = [] {
  Ham::ipmiHams["TestBackEnd"] = backEnd;
  return true;
}();

}  // namespace

extern "C" {

// Null takes a sensor away.
__attribute__((visibility("default"))) void back_end_sensor(const char* name, const char* value) {
  if (value != nullptr) {
    backEnd()->sensors_[name] = value;
  } else {
    backEnd()->sensors_.erase(name);
  }
}

__attribute__((visibility("default"))) void back_end_status(int status) {
  backEnd()->status_ = status;
}
}
