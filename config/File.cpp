// SPDX-License-Identifier: Apache-2.0
#include "config/File.hpp"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "config/FileError.hpp"

namespace Config {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const char* what, int error) {
  throw FileError({path}, what + (": " + std::generic_category().message(error)));
}

// The file that `path` stands for, by way of links; of one that is no plain file (a pipe, a
// terminal) there is none to put another in the place of.
fs::path replaceable(const fs::path& path) {
  std::error_code none;
  const fs::file_status status = fs::status(path, none);
  if (!fs::exists(status)) {
    return path;
  }
  return fs::is_regular_file(status) ? fs::canonical(path, none) : fs::path();
}

// Returns 0 or an errno value.
int put(const fs::path& path, std::string_view contents) {
  errno = 0;
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << contents;
  file.close();
  return file ? 0 : errno;
}

int replace(const fs::path& path, std::string_view contents) {
  const fs::path part = path.string() + ".part";
  std::error_code error(put(part, contents), std::generic_category());
  if (!error) {
    std::error_code none;
    if (fs::exists(path, none)) {
      fs::permissions(part, fs::status(path, none).permissions(), none);
    }
    fs::rename(part, path, error);
  }
  if (error) {
    std::error_code none;
    fs::remove(part, none);
  }
  return error.value();
}

}  // namespace

std::string readFile(const std::string& path, size_t most) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string contents;
  std::array<char, 16'384> piece{};
  while (file && contents.size() <= most) {
    file.read(piece.data(), piece.size());
    contents.append(piece.data(), static_cast<size_t>(file.gcount()));
  }
  if (!file.is_open() || file.bad()) {
    fail(path, "cannot be read", errno);
  }
  if (contents.size() > most) {
    throw FileError({path}, "more than " + std::to_string(most) + " bytes");
  }
  return contents;
}

void writeFile(const std::string& path, std::string_view contents) {
  const fs::path target = replaceable(path);
  const int error = target.empty() ? put(path, contents) : replace(target, contents);
  if (error != 0) {
    fail(path, "cannot be written", error);
  }
}

}  // namespace Config
