// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/LineReader.hpp"

#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <limits>

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/Text.hpp"

namespace SmbusService::Recording {

namespace {

using rapidjson::Value;

// The parser goes down with the text, so a line of brackets must not come to it. A record's
// requests and clients are two levels below the line.
constexpr unsigned kDeepest = 16;

bool tooDeep(std::string_view line) {
  unsigned depth = 0;
  bool inText = false;
  for (size_t i = 0; i < line.size() && depth <= kDeepest; ++i) {
    const char c = line[i];
    if (inText && c == '\\') {
      ++i;
    } else if (c == '"') {
      inText = !inText;
    } else if (!inText && (c == '{' || c == '[')) {
      ++depth;
    } else if (!inText && (c == '}' || c == ']') && depth > 0) {
      --depth;
    }
  }
  return depth > kDeepest;
}
using std::chrono::nanoseconds;

template <typename... Args>
[[noreturn]] void refuse(fmt::format_string<Args...> text, Args&&... args) {
  throw Damage{0, fmt::format(text, std::forward<Args>(args)...)};
}

// The members of an object, of the types that they should have.
class Fields {
 public:
  Fields(const Value& value, const char* what) : value_(value), what_(what) {
    if (!value.IsObject()) {
      refuse("{} is no object", what);
    }
  }

  // Null: absent.
  [[nodiscard]] const Value* find(const char* key) const {
    const auto found = value_.FindMember(key);
    return found == value_.MemberEnd() ? nullptr : &found->value;
  }
  [[nodiscard]] const Value& get(const char* key) const {
    const Value* found = find(key);
    if (found == nullptr) {
      refuse("{} has no \"{}\"", what_, key);
    }
    return *found;
  }

  template <typename Number>
  [[nodiscard]] Number number(const char* key) const {
    const Value& value = get(key);
    if (!value.IsUint64() || value.GetUint64() > uint64_t{std::numeric_limits<Number>::max()}) {
      refuse("\"{}\" of {} is no whole number up to {}", key, what_,
             std::numeric_limits<Number>::max());
    }
    return static_cast<Number>(value.GetUint64());
  }
  [[nodiscard]] std::string_view text(const char* key) const {
    const Value& value = get(key);
    if (!value.IsString()) {
      refuse("\"{}\" of {} is no text", key, what_);
    }
    return {value.GetString(), value.GetStringLength()};
  }
  [[nodiscard]] const Value& list(const char* key) const {
    const Value& value = get(key);
    if (!value.IsArray()) {
      refuse("\"{}\" of {} is no list", key, what_);
    }
    return value;
  }
  // A text that `read` understands.
  template <typename Read>
  [[nodiscard]] auto text(const char* key, Read read, const char* form) const {
    const auto value = read(text(key));
    if (!value) {
      refuse("\"{}\" of {} is not of the form {}", key, what_, form);
    }
    return *value;
  }

 private:
  const Value& value_;
  const char* what_;
};

nanoseconds duration(const Fields& fields, const char* key) {
  return nanoseconds(fields.number<int64_t>(key));
}

Moment moment(const Fields& fields) {
  return {fields.text("time", fromUtc, "2026-01-31T12:00:00.000000Z"),
          duration(fields, "monotonic_ns")};
}

std::string bytes(const Fields& fields, const char* key) {
  return fields.text(key, fromHex, "two digits a byte, \"00ff\"");
}

Smbus::MasterType master(const Fields& fields) {
  const std::string name(fields.text("master"));
  Smbus::MasterType type = Smbus::I2C;
  if (!Smbus::MasterType_Parse(name, &type)) {
    refuse("\"{}\" is no kind of controller", name);
  }
  return type;
}

Header header(const Fields& fields) {
  if (fields.text("format") != kFormatName) {
    refuse("the format is \"{}\", not \"{}\"", fields.text("format"), kFormatName);
  }
  const auto version = fields.number<uint32_t>("version");
  if (version != kFormatVersion) {
    refuse("its version of the format is {}, this program's is {}", version, kFormatVersion);
  }
  Header header{std::string(fields.text("service")), moment(fields), {}};
  for (const Value& value : fields.list("buses").GetArray()) {
    const Fields bus(value, "a bus");
    header.buses.push_back({master(bus), bus.number<uint32_t>("controller"),
                            bus.number<uint32_t>("accelerator"), bus.number<uint32_t>("bus")});
  }
  return header;
}

void readBus(const Fields& fields, const std::vector<BusKey>& buses, Smbus::Request& request) {
  if (fields.find("bus") == nullptr) {
    if (fields.find("master") != nullptr) {
      request.set_mastertype(master(fields));
    }
    if (fields.find("controller") != nullptr) {
      request.set_controlleraddr(fields.number<uint32_t>("controller"));
    }
    return;
  }
  const auto index = fields.number<uint32_t>("bus");
  if (index >= buses.size()) {
    refuse("bus {} is none of the {} in the first line", index, buses.size());
  }
  const BusKey& bus = buses[index];
  if (SmbusAddress::kBus.get(request.addr()) != bus.bus ||
      SmbusAddress::kAccelerator.get(request.addr()) != bus.accelerator) {
    refuse("address {} is not on {}", toWord(request.addr()), describe(bus));
  }
  request.set_mastertype(bus.master);
  request.set_controlleraddr(bus.controller);
}

void readRequest(const Fields& fields, const std::vector<BusKey>& buses, Smbus::Request& request) {
  if (fields.find("type") != nullptr) {
    const std::string name(fields.text("type"));
    Smbus::RequestType type = Smbus::Read;
    if (!Smbus::RequestType_Parse(name, &type)) {
      refuse("\"{}\" is no type of request", name);
    }
    request.set_type(type);
  }
  if (fields.find("addr") != nullptr) {
    request.set_addr(fields.text("addr", fromWord, "\"0x0340004e00000040\""));
  }
  readBus(fields, buses, request);
  if (fields.find("size") != nullptr) {
    request.set_size(fields.number<uint32_t>("size"));
  }
  if (fields.find("data") != nullptr) {
    request.set_data(bytes(fields, "data"));
  }
  if (const Value* pec = fields.find("pec")) {
    if (!pec->IsBool()) {
      refuse("\"pec\" of a request is neither true nor false");
    }
    request.set_writeflag(pec->GetBool());
  }
}

Peer client(const Fields& fields) {
  return {.pid = fields.number<pid_t>("pid"),
          .uid = fields.number<uid_t>("uid"),
          .gid = 0,
          .connection = fields.number<uint64_t>("connection")};
}

void readAnswers(const Value& list, Record& record) {
  for (const Value& value : list.GetArray()) {
    const auto data =
        value.IsString() ? fromHex({value.GetString(), value.GetStringLength()}) : std::nullopt;
    if (!data) {
      refuse("an answer is not of the form two digits a byte, \"00ff\"");
    }
    record.response.add_response()->set_data(*data);
  }
  if (record.response.response_size() != record.request.request_size()) {
    refuse("{} requests have {} answers", record.request.request_size(),
           record.response.response_size());
  }
}

void readOutcome(const Fields& fields, Record& record) {
  if (fields.find("answers") != nullptr) {
    readAnswers(fields.list("answers"), record);
    return;
  }
  record.response.set_failed(true);
  record.response.set_reason(std::string(fields.text("reason")));
  if (fields.find("failed") != nullptr) {
    record.failedRequest = fields.number<uint32_t>("failed");
    if (*record.failedRequest >= static_cast<size_t>(record.request.request_size())) {
      refuse("request {} failed, but there are {}", *record.failedRequest,
             record.request.request_size());
    }
  }
}

Record record(const Fields& fields, const std::vector<BusKey>& buses) {
  Record record;
  record.number = fields.number<uint64_t>("n");
  record.begun = moment(fields);
  record.duration = duration(fields, "duration_ns");
  record.client = client(Fields(fields.get("client"), "the client"));
  if (fields.find("id") != nullptr) {
    record.request.set_id(fields.number<uint32_t>("id"));
  }
  if (fields.find("retries") != nullptr) {
    record.request.set_retrycount(fields.number<uint32_t>("retries"));
  }
  for (const Value& value : fields.list("requests").GetArray()) {
    readRequest(Fields(value, "a request"), buses, *record.request.add_request());
  }
  readOutcome(fields, record);
  return record;
}

Line readObject(const Fields& fields, const std::vector<BusKey>& buses) {
  if (fields.find("format") != nullptr) {
    return header(fields);
  }
  if (fields.find("dropped") != nullptr) {
    return Gap{moment(fields), fields.number<uint64_t>("dropped")};
  }
  return record(fields, buses);
}

}  // namespace

Line readLine(std::string_view line, const std::vector<BusKey>& buses) {
  if (tooDeep(line)) {
    return Damage{0, "the line nests too deep for one of a recording"};
  }
  rapidjson::Document document;
  document.Parse<rapidjson::kParseValidateEncodingFlag>(line.data(), line.size());
  if (document.HasParseError()) {
    return Damage{document.GetErrorOffset() + 1,
                  rapidjson::GetParseError_En(document.GetParseError())};
  }
  try {
    return readObject(Fields(document, "the line"), buses);
  } catch (const Damage& damage) {
    return damage;
  }
}

}  // namespace SmbusService::Recording
