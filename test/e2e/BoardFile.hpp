// SPDX-License-Identifier: Apache-2.0
//
// A board description, and what a host hands the library of it (boards/halvorsa/README.md).
#pragma once

#include <rapidjson/document.h>

#include <string>

namespace E2e {

std::string contentsOf(const std::string& path);

class BoardFile {
 public:
  explicit BoardFile(const std::string& path);

  // The text to start the library with.
  [[nodiscard]] std::string topology() const;

  // The text to add entry `name` of a list ("fans") with: its device with the entry's arguments
  // merged over the device's own, and those of its modules if it has any. The board must have both.
  [[nodiscard]] std::string description(const char* list, const std::string& name) const;

 private:
  [[nodiscard]] rapidjson::Document describe(const rapidjson::Value& entry) const;

  rapidjson::Document board_;
};

}  // namespace E2e
