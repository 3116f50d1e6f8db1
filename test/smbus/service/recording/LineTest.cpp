// SPDX-License-Identifier: Apache-2.0
//
// The lines of a recording: what is written, read by a JSON parser and by the reader, and what the
// reader says of lines that are none.
#include <gmock/gmock.h>

#include "smbus/service/recording/LineReader.hpp"
#include "smbus/service/recording/LineWriter.hpp"
#include "test/smbus/service/recording/Recordings.hpp"

namespace SmbusService::Recording {
namespace {

using testing::HasSubstr;

const std::vector<BusKey> kBuses{{Smbus::SCD, 0x700, 1, 3}, busKey()};

Record sample() {
  Record record;
  record.number = 7;
  record.begun = {std::chrono::seconds(1), std::chrono::nanoseconds(5'000'001)};
  record.duration = std::chrono::nanoseconds(12'345);
  record.client = {.pid = 12, .uid = 34, .gid = 0, .connection = 56};
  addSend(record.request, 0x70, 1);
  addRead(record.request, 0x50, 0x10, 2);
  addWrite(record.request, 0x50, 0x20, std::string("\x00\xff", 2)).set_writeflag(true);
  record.response.add_response();
  record.response.add_response()->set_data("AB");
  record.response.add_response();
  return record;
}

Record readBack(const Record& record) {
  LineWriter writer(kBuses);
  std::string_view line = writer.record(record);
  EXPECT_TRUE(line.ends_with('\n'));
  line.remove_suffix(1);
  const Line read = readLine(line, kBuses);
  EXPECT_TRUE(std::holds_alternative<Record>(read)) << line;
  return std::get<Record>(read);
}

std::string damageOf(std::string_view line) {
  const Line read = readLine(line, kBuses);
  const auto* damage = std::get_if<Damage>(&read);
  return damage == nullptr ? "none" : damage->message;
}

TEST(RecordingLine, SaysWhoAskedWhatOfWhichBusAndWhatCameBack) {
  LineWriter writer(kBuses);
  const rapidjson::Document line = parsed(writer.record(sample()));
  EXPECT_EQ(line["n"].GetUint64(), 7U);
  EXPECT_STREQ(line["time"].GetString(), "1970-01-01T00:00:01.000000Z");
  EXPECT_EQ(line["monotonic_ns"].GetUint64(), 5'000'001U);
  EXPECT_EQ(line["duration_ns"].GetUint64(), 12'345U);
  EXPECT_EQ(line["client"]["pid"].GetUint64(), 12U);
  EXPECT_EQ(line["client"]["uid"].GetUint64(), 34U);
  EXPECT_EQ(line["client"]["connection"].GetUint64(), 56U);
  EXPECT_FALSE(line.HasMember("id"));
  EXPECT_FALSE(line.HasMember("reason"));
  ASSERT_EQ(line["requests"].Size(), 3U);
  const auto& write = line["requests"][2];
  EXPECT_STREQ(write["type"].GetString(), "Write");
  EXPECT_EQ(write["bus"].GetUint64(), 1U);
  EXPECT_STREQ(write["addr"].GetString(), "0x020002d000000020");
  EXPECT_EQ(write["size"].GetUint64(), 2U);
  EXPECT_STREQ(write["data"].GetString(), "00ff");
  EXPECT_TRUE(write["pec"].GetBool());
  EXPECT_STREQ(line["answers"][1].GetString(), "4142");
}

TEST(RecordingLine, IsReadAsItWasWritten) {
  Record record = sample();
  record.request.set_id(9);
  record.request.set_retrycount(0);
  const Record read = readBack(record);
  EXPECT_EQ(read.number, record.number);
  EXPECT_EQ(read.begun.utc, record.begun.utc);
  EXPECT_EQ(read.begun.monotonic, record.begun.monotonic);
  EXPECT_EQ(read.duration, record.duration);
  EXPECT_EQ(read.client.pid, record.client.pid);
  EXPECT_EQ(read.client.uid, record.client.uid);
  EXPECT_EQ(read.client.connection, record.client.connection);
  ASSERT_EQ(read.request.request_size(), 3);
  EXPECT_EQ(read.request.request(1).addr(), record.request.request(1).addr());
  EXPECT_EQ(read.request.request(1).mastertype(), Smbus::I2C);
  EXPECT_EQ(read.request.request(2).data(), std::string("\x00\xff", 2));
  EXPECT_TRUE(read.request.request(2).writeflag());
  EXPECT_EQ(read.request.id(), 9U);
  EXPECT_TRUE(read.request.has_retrycount());
  EXPECT_EQ(read.response.response(1).data(), "AB");
  EXPECT_FALSE(read.response.failed());
}

TEST(RecordingLine, AFailureKeepsItsReasonAndItsRequest) {
  Record record = sample();
  record.response.Clear();
  record.response.set_failed(true);
  record.response.set_reason("request 1 (read word): \"no\" \\ \xC3\xA9");
  record.failedRequest = 1;
  const Record read = readBack(record);
  EXPECT_TRUE(read.response.failed());
  EXPECT_EQ(read.response.reason(), record.response.reason());
  EXPECT_EQ(read.failedRequest, 1U);
}

TEST(RecordingLine, ARequestThatTheServiceRefusedIsKeptAsItCame) {
  Record record = sample();
  record.request.clear_request();
  record.request.add_request()->set_size(3);
  Smbus::Request& stranger = *record.request.add_request();
  stranger.set_mastertype(Smbus::PLM);
  stranger.set_controlleraddr(0x42);
  record.response.Clear();
  record.response.set_failed(true);
  const Record read = readBack(record);
  EXPECT_FALSE(read.request.request(0).has_type());
  EXPECT_FALSE(read.request.request(0).has_addr());
  EXPECT_FALSE(read.request.request(0).has_mastertype());
  EXPECT_EQ(read.request.request(0).size(), 3U);
  EXPECT_EQ(read.request.request(1).mastertype(), Smbus::PLM);
  EXPECT_EQ(read.request.request(1).controlleraddr(), 0x42U);
}

TEST(RecordingLine, AHeaderIsReadAsItWasWritten) {
  LineWriter writer(kBuses);
  std::string_view line = writer.header({"1.2.3", {std::chrono::seconds(5), {}}, kBuses});
  line.remove_suffix(1);
  const Line read = readLine(line, {});
  ASSERT_TRUE(std::holds_alternative<Header>(read)) << line;
  EXPECT_EQ(std::get<Header>(read).service, "1.2.3");
  EXPECT_EQ(std::get<Header>(read).begun.utc, std::chrono::seconds(5));
  EXPECT_EQ(std::get<Header>(read).buses, kBuses);
}

TEST(RecordingLine, AGapIsReadAsItWasWritten) {
  LineWriter writer(kBuses);
  std::string_view line = writer.gap({{}, 99});
  line.remove_suffix(1);
  const Line read = readLine(line, {});
  ASSERT_TRUE(std::holds_alternative<Gap>(read)) << line;
  EXPECT_EQ(std::get<Gap>(read).transactions, 99U);
}

// A line with one request, in which a test puts something wrong.
std::string lineWith(const std::string& request, const std::string& outcome) {
  return R"({"n":1,"time":"2026-01-31T12:00:00Z","monotonic_ns":1,"duration_ns":1,)"
         R"("client":{"pid":1,"uid":0,"connection":1},"requests":[)" +
         request + "]," + outcome + "}";
}
const std::string kGood = R"({"type":"Read","bus":1,"addr":"0x020002d000000010","size":1})";

TEST(RecordingLine, TheLineOfTheFollowingTestsIsGood) {
  EXPECT_EQ(damageOf(lineWith(kGood, R"("answers":["00"])")), "none");
}

TEST(RecordingLine, SaysWhatIsWrongWithALine) {
  const struct {
    std::string line;
    const char* message;
  } cases[] = {
      {"", "empty"},
      {"nonsense", "Invalid value"},
      {"[1]", "the line is no object"},
      {"{}", "the line has no \"n\""},
      {R"({"n":-1})", "\"n\" of the line is no whole number up to"},
      {R"({"n":1,"time":"noon"})", "\"time\" of the line is not of the form 2026-"},
      {R"({"format":"x"})", "the format is \"x\", not \"nimbo-smbus-recording\""},
      {R"({"format":"nimbo-smbus-recording","version":2})",
       "its version of the format is 2, this program's is 1"},
      {R"({"dropped":1})", "the line has no \"time\""},
      {lineWith(R"({"type":"Peek"})", R"("answers":[""])"), "\"Peek\" is no type of request"},
      {lineWith(R"({"addr":"16"})", R"("answers":[""])"), "\"addr\" of a request is not of the"},
      {lineWith(R"({"addr":16})", R"("answers":[""])"), "\"addr\" of a request is no text"},
      {lineWith(R"({"bus":2})", R"("answers":[""])"), "bus 2 is none of the 2 in the first line"},
      {lineWith(R"({"bus":0,"addr":"0x0"})", R"("answers":[""])"),
       "address 0x0000000000000000 is not on SCD 0x00000700 accelerator 1 bus 3"},
      {lineWith(R"({"data":"0"})", R"("answers":[""])"),
       "\"data\" of a request is not of the form"},
      {lineWith(R"({"master":"USB"})", R"("answers":[""])"), "\"USB\" is no kind of controller"},
      {lineWith(R"({"pec":1})", R"("answers":[""])"), "\"pec\" of a request is neither"},
      {lineWith(kGood, R"("answers":[])"), "1 requests have 0 answers"},
      {lineWith(kGood, R"("answers":[1])"), "an answer is not of the form"},
      {lineWith(kGood, R"("answers":{})"), "\"answers\" of the line is no list"},
      {lineWith(kGood, R"("failed":1,"reason":"x")"), "request 1 failed, but there are 1"},
      {lineWith(kGood, R"("failed":0)"), "the line has no \"reason\""},
      {lineWith("3", R"("answers":[""])"), "a request is no object"},
  };
  for (const auto& [line, message] : cases) {
    EXPECT_THAT(damageOf(line), HasSubstr(message)) << line;
  }
}

TEST(RecordingLine, DeepNestingIsOnlyDamage) {
  EXPECT_THAT(damageOf(std::string(1'000'000, '[')), HasSubstr("nests too deep"));
}

TEST(RecordingLine, BracketsInTextsAreNoNesting) {
  const std::string reason = R"("failed":0,"reason":"\"[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["})";
  EXPECT_EQ(damageOf(lineWith(kGood, reason.substr(0, reason.size() - 1))), "none");
}

}  // namespace
}  // namespace SmbusService::Recording
