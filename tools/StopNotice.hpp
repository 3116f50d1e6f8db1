// SPDX-License-Identifier: Apache-2.0
//
// Tells the operator which device it was when a check of the library stops the process. The check's
// own message names a place in the library's source and no device.
#pragma once

#include <string>

namespace Nimbo {

// While one lives, an abort says so on standard error. At most one lives at a time.
class StopNotice {
 public:
  explicit StopNotice(const std::string& device);
  ~StopNotice();
  StopNotice(const StopNotice&) = delete;
  StopNotice& operator=(const StopNotice&) = delete;
};

}  // namespace Nimbo
