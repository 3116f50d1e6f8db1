// SPDX-License-Identifier: Apache-2.0
//
// Reads a recording from its first line to its last. A damaged line is told with its place, and the
// lines after it are read all the same.
#pragma once

#include <istream>
#include <memory>

#include "config/FileError.hpp"
#include "smbus/service/recording/LineReader.hpp"

namespace SmbusService::Recording {

class RecordingReader {
 public:
  // Reads the first line. Throws Config::FileError when there is no such file or it is no
  // recording. `name` stands for the stream in messages.
  explicit RecordingReader(const std::string& path);
  RecordingReader(std::string name, std::unique_ptr<std::istream> in);

  [[nodiscard]] const Header& header() const { return header_; }

  // The next line that says something. False: there is none.
  [[nodiscard]] bool next(Line& line);

  // The place of the line that came last, for messages about it.
  [[nodiscard]] Config::Place place(const Damage& damage = {}) const;

 private:
  void readHeader();
  [[nodiscard]] bool fetch(Line& line);

  const std::string name_;
  const std::unique_ptr<std::istream> in_;
  Header header_;
  std::string text_;
  size_t number_ = 0;
};

}  // namespace SmbusService::Recording
