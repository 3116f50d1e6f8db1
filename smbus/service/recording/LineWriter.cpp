// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/LineWriter.hpp"

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/Text.hpp"

namespace SmbusService::Recording {

LineWriter::LineWriter(const std::vector<BusKey>& buses) {
  for (size_t i = 0; i < buses.size(); ++i) {
    indices_.emplace(buses[i], i);
  }
}

void LineWriter::begin() {
  buffer_.Clear();
  writer_.Reset(buffer_);
  writer_.StartObject();
}

std::string_view LineWriter::end() {
  writer_.EndObject();
  buffer_.Put('\n');
  return {buffer_.GetString(), buffer_.GetSize()};
}

void LineWriter::text(std::string_view name, std::string_view value) {
  key(name);
  writer_.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void LineWriter::count(std::string_view name, uint64_t value) {
  key(name);
  writer_.Uint64(value);
}

void LineWriter::moment(const Moment& moment) {
  text("time", toUtc(moment.utc));
  count("monotonic_ns", static_cast<uint64_t>(moment.monotonic.count()));
}

std::string_view LineWriter::header(const Header& header) {
  begin();
  text("format", kFormatName);
  count("version", kFormatVersion);
  text("service", header.service);
  moment(header.begun);
  key("buses");
  writer_.StartArray();
  for (const BusKey& bus : header.buses) {
    writer_.StartObject();
    text("master", Smbus::MasterType_Name(bus.master));
    count("controller", bus.controller);
    count("accelerator", bus.accelerator);
    count("bus", bus.bus);
    writer_.EndObject();
  }
  writer_.EndArray();
  return end();
}

std::string_view LineWriter::gap(const Gap& gap) {
  begin();
  count("dropped", gap.transactions);
  moment(gap.noticed);
  return end();
}

std::string_view LineWriter::record(const Record& record) {
  begin();
  count("n", record.number);
  moment(record.begun);
  count("duration_ns", static_cast<uint64_t>(record.duration.count()));
  key("client");
  writer_.StartObject();
  count("pid", static_cast<uint64_t>(record.client.pid));
  count("uid", record.client.uid);
  count("connection", record.client.connection);
  writer_.EndObject();
  if (record.request.has_id()) {
    count("id", record.request.id());
  }
  if (record.request.has_retrycount()) {
    count("retries", record.request.retrycount());
  }
  key("requests");
  writer_.StartArray();
  for (const Smbus::Request& request : record.request.request()) {
    this->request(request);
  }
  writer_.EndArray();
  outcome(record);
  return end();
}

// A field that the client did not set does not stand here either.
void LineWriter::request(const Smbus::Request& request) {
  writer_.StartObject();
  if (request.has_type()) {
    text("type", Smbus::RequestType_Name(request.type()));
  }
  bus(request);
  if (request.has_addr()) {
    text("addr", toWord(request.addr()));
  }
  if (request.has_size()) {
    count("size", request.size());
  }
  if (request.has_data()) {
    text("data", toHex(request.data()));
  }
  if (request.has_writeflag() && request.writeflag()) {
    key("pec");
    writer_.Bool(true);
  }
  writer_.EndObject();
}

void LineWriter::bus(const Smbus::Request& request) {
  const auto known = request.has_mastertype()
                         ? indices_.find({request.mastertype(), request.controlleraddr(),
                                          SmbusAddress::kAccelerator.get(request.addr()),
                                          SmbusAddress::kBus.get(request.addr())})
                         : indices_.end();
  if (known != indices_.end()) {
    count("bus", known->second);
    return;
  }
  if (request.has_mastertype()) {
    text("master", Smbus::MasterType_Name(request.mastertype()));
  }
  if (request.has_controlleraddr()) {
    count("controller", request.controlleraddr());
  }
}

void LineWriter::outcome(const Record& record) {
  if (!record.response.failed()) {
    key("answers");
    writer_.StartArray();
    for (const Smbus::Response& response : record.response.response()) {
      const std::string hex = toHex(response.data());
      writer_.String(hex.data(), static_cast<rapidjson::SizeType>(hex.size()));
    }
    writer_.EndArray();
    return;
  }
  if (record.failedRequest) {
    count("failed", *record.failedRequest);
  }
  text("reason", record.response.reason());
}

}  // namespace SmbusService::Recording
