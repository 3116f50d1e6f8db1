// SPDX-License-Identifier: Apache-2.0
//
// A directory of the test's own, gone with it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace Doubles {

class Directory {
 public:
  Directory() {
    std::string pattern = std::filesystem::temp_directory_path() / "nimbo-ipmi-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no directory " + pattern);
    }
    path_ = pattern;
  }
  // Somebody who still reads a controller may put files into it while it is removed.
  ~Directory() {
    std::error_code error;
    for (int i = 0; i < 1000 && std::filesystem::exists(path_, error); ++i) {
      std::filesystem::remove_all(path_, error);
    }
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  [[nodiscard]] std::string path(const std::string& file) const { return path_ / file; }

  // Writes a file with these permissions and returns its path.
  std::string write(const std::string& file, const std::string& text,
                    std::filesystem::perms permissions = std::filesystem::perms::owner_read |
                                                         std::filesystem::perms::owner_write) {
    std::ofstream(path_ / file) << text;
    std::filesystem::permissions(path_ / file, permissions);
    return path(file);
  }

  std::string writeProgram(const std::string& file, const std::string& script) {
    return write(file, "#!/bin/sh\n" + script + "\n", std::filesystem::perms::owner_all);
  }

  [[nodiscard]] std::string read(const std::string& file) const {
    std::ifstream in(path_ / file);
    return {std::istreambuf_iterator<char>(in), {}};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace Doubles
