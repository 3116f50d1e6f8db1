// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordingReader.hpp"

#include <cerrno>
#include <fstream>
#include <system_error>

namespace SmbusService::Recording {

namespace {

// Longer than the line of the largest message with the largest answer.
constexpr size_t kLongestLine = 16 * 1024 * 1024;

std::unique_ptr<std::istream> openFile(const std::string& path) {
  errno = 0;
  auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
  file->peek();  // a directory opens as well, and cannot be read
  if (!file->is_open() || file->bad()) {
    throw Config::FileError({path}, "cannot be read: " + std::generic_category().message(errno));
  }
  return file;
}

enum class Fetched { kWhole, kCut, kTooLong, kNone };

// Takes a line without its end; of one that is too long the beginning.
Fetched fetchLine(std::istream& in, std::string& text) {
  text.clear();
  std::streambuf& bytes = *in.rdbuf();
  for (int byte = bytes.sbumpc(); byte != std::char_traits<char>::eof(); byte = bytes.sbumpc()) {
    if (byte == '\n') {
      return text.size() > kLongestLine ? Fetched::kTooLong : Fetched::kWhole;
    }
    if (text.size() <= kLongestLine) {
      text.push_back(static_cast<char>(byte));
    }
  }
  return text.empty() ? Fetched::kNone : Fetched::kCut;
}

}  // namespace

RecordingReader::RecordingReader(const std::string& path) : RecordingReader(path, openFile(path)) {}

RecordingReader::RecordingReader(std::string name, std::unique_ptr<std::istream> in)
    : name_(std::move(name)), in_(std::move(in)) {
  readHeader();
}

void RecordingReader::readHeader() {
  Line line;
  if (!fetch(line)) {
    throw Config::FileError({name_}, "the file is empty; a recording has a header at least");
  }
  if (const auto* header = std::get_if<Header>(&line)) {
    header_ = *header;
    return;
  }
  const auto* damage = std::get_if<Damage>(&line);
  throw Config::FileError(place(damage == nullptr ? Damage{} : *damage),
                          (damage == nullptr ? "" : damage->message + "; ") +
                              "a recording begins with its header, as smbusd --record writes it");
}

bool RecordingReader::fetch(Line& line) {
  const Fetched fetched = fetchLine(*in_, text_);
  ++number_;
  switch (fetched) {
    case Fetched::kWhole:
      line = readLine(text_, header_.buses);
      return true;
    case Fetched::kCut:
      line = Damage{text_.size() + 1, "the line is cut off"};
      return true;
    case Fetched::kTooLong:
      line = Damage{0, "the line is too long for one of a recording"};
      return true;
    case Fetched::kNone:
      break;
  }
  return false;
}

bool RecordingReader::next(Line& line) {
  if (!fetch(line)) {
    return false;
  }
  if (std::holds_alternative<Header>(line)) {
    line = Damage{0, "a header belongs into the first line"};
  }
  return true;
}

Config::Place RecordingReader::place(const Damage& damage) const {
  return {name_, number_, damage.column == 0 ? 1 : damage.column};
}

}  // namespace SmbusService::Recording
