// SPDX-License-Identifier: Apache-2.0
#include "tools/File.hpp"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "config/FileError.hpp"

namespace Nimbo {

namespace {

[[noreturn]] void failForReason(const std::string& path) {
  throw Config::FileError({path}, std::generic_category().message(errno));
}

}  // namespace

std::vector<uint8_t> readFile(const std::string& path, size_t most) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string contents(most + 1, '\0');
  file.read(contents.data(), static_cast<std::streamsize>(contents.size()));
  if (errno != 0 || file.bad()) {
    failForReason(path);
  }
  contents.resize(static_cast<size_t>(file.gcount()));
  if (contents.size() > most) {
    throw Config::FileError({path}, "more than " + std::to_string(most) + " bytes");
  }
  return {contents.begin(), contents.end()};
}

void writeFile(const std::string& path, std::string_view contents) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << contents << std::flush;
  if (!file) {
    failForReason(path);
  }
}

}  // namespace Nimbo
