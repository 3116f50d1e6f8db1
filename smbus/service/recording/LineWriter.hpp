// SPDX-License-Identifier: Apache-2.0
//
// The lines of a recording, each one JSON object and a line's end.
#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <map>
#include <string_view>

#include "smbus/service/recording/Record.hpp"

namespace SmbusService::Recording {

class LineWriter {
 public:
  // Requests on these buses name them by their index.
  explicit LineWriter(const std::vector<BusKey>& buses);

  // Each is valid until the next call.
  [[nodiscard]] std::string_view header(const Header& header);
  [[nodiscard]] std::string_view record(const Record& record);
  [[nodiscard]] std::string_view gap(const Gap& gap);

 private:
  void begin();
  std::string_view end();
  void key(std::string_view name) {
    writer_.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
  }
  void text(std::string_view key, std::string_view value);
  void count(std::string_view key, uint64_t value);
  void moment(const Moment& moment);
  void request(const Smbus::Request& request);
  void bus(const Smbus::Request& request);
  void outcome(const Record& record);

  std::map<BusKey, size_t> indices_;
  rapidjson::StringBuffer buffer_;
  rapidjson::Writer<rapidjson::StringBuffer> writer_;
};

}  // namespace SmbusService::Recording
