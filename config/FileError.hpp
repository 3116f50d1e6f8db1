// SPDX-License-Identifier: Apache-2.0
//
// What is wrong with a file that somebody wrote, and where: the one kind of error that the tools
// and the service report for their input files.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Config {

// A place in a text file. Lines and columns count from 1, columns in characters (UTF-8 code points,
// a tab is one). Line 0 means the file as a whole, when it cannot be read for instance.
struct Place {
  std::string file;
  size_t line = 0;
  size_t column = 0;

  bool operator==(const Place&) const = default;

  // "file:line:column", or "file" for the file as a whole.
  std::string text() const {
    return line == 0 ? file : file + ":" + std::to_string(line) + ":" + std::to_string(column);
  }
};

// what() is one line, "file:line:column: message", made to be shown to the file's author as it
// stands. `pointer` is the value that is wrong (RFC 6901), empty where it is the file or unknown.
class FileError : public std::runtime_error {
 public:
  FileError(Place place, const std::string& message, std::string_view pointer = {})
      : std::runtime_error(place.text() + ": " + message),
        place_(std::move(place)),
        pointer_(pointer) {}

  const Place& place() const { return place_; }
  const std::string& pointer() const { return pointer_; }

  // what() without the place.
  std::string message() const {
    return std::string(what()).substr(place_.text().size() + std::string_view(": ").size());
  }

 private:
  Place place_;
  std::string pointer_;
};

}  // namespace Config
