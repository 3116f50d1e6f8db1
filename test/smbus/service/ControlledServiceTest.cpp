// SPDX-License-Identifier: Apache-2.0
//
// A real smbusd whose virtual board is broken through the control socket while clients use it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <thread>

#include "test/smbus/service/support/LineClient.hpp"
#include "test/smbus/service/support/Messages.hpp"
#include "test/smbus/service/support/ServiceProcess.hpp"
#include "test/smbus/service/support/TestClient.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;
using testing::Optional;

constexpr uint8_t kFans = 0x4E;
constexpr uint32_t kOtherBus = kChipBus + 1;

class ControlledServiceTest : public testing::Test {
 protected:
  ControlledServiceTest() {
    service_.writeBoard(R"({"buses": [
      {"name": "b", "timeoutMs": 5, "chips": [
        {"label": "chip", "model": "register", "address": "0x50", "fill": 65, "pec": true},
        {"label": "fans", "model": "psoc", "address": "0x4E", "fans": [{"maxRpm": 9000}]}]},
      {"name": "c", "chips": [
        {"label": "far", "model": "register", "address": "0x50", "fill": 65}]}]})");
    service_.writeConfiguration(R"({"virtual_board": "board.json", "limits": {"bus_ms": 100},
      "buses": [{"master": "I2C", "bus": 5, "backend": {"virtual": "b"}},
                {"master": "I2C", "bus": 6, "backend": {"virtual": "c"}}]})");
    service_.start();
    control_.emplace(service_.controlPath());
    client_.emplace(service_.socketPath());
  }

  // The answer to a request, which is given with single quotes.
  std::string control(std::string request) {
    for (char& c : request) {
      c = c == '\'' ? '"' : c;
    }
    control_->say(request + "\n");
    return control_->hear().value_or("closed");
  }

  // Why a PEC-checked read fails; empty if it succeeds with the value that the chip has.
  std::string read(uint32_t bus = kChipBus, uint8_t device = kChipAddress, bool pec = true) {
    Smbus::TransactionRequest message;
    Smbus::Request& request = addRead(message, device, kChipRegister, 1, {.bus = bus});
    if (pec) {
      request.set_addr(SmbusAddress::kReadFlag.set(request.addr(), 1));
    }
    const auto answer = client_->call(message);
    if (!answer) {
      return "closed";
    }
    if (answer->failed()) {
      return answer->reason();
    }
    return answer->response(0).data() == std::string(1, kChipValue) ? "" : "another value";
  }

  ServiceProcess service_;
  std::optional<LineClient> control_;
  std::optional<TestClient> client_;
};

struct Broken {
  const char* kind;  // and its options
  const char* target;
  const char* reason;
};

class EachFaultTest : public ControlledServiceTest, public testing::WithParamInterface<Broken> {};

TEST_P(EachFaultTest, IsSeenByTheClientUntilItIsCleared) {
  const Broken& broken = GetParam();
  EXPECT_EQ(read(), "");
  EXPECT_THAT(control(std::string("{'command': 'fault', 'target': '") + broken.target + "', " +
                      broken.kind + "}"),
              HasSubstr("\"id\":1"));
  EXPECT_THAT(read(), HasSubstr(broken.reason));
  EXPECT_EQ(read(kOtherBus, kChipAddress, false), "");
  EXPECT_THAT(control("{'command': 'clear', 'what': 'all'}"), HasSubstr("\"cleared\":1"));
  while (read().find("the bus hangs") != std::string::npos) {
    std::this_thread::yield();
  }
  EXPECT_EQ(read(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, EachFaultTest,
    testing::Values(Broken{"'kind': 'silent'", "chip", "No such device or address"},
                    Broken{"'kind': 'nack', 'bytes': 1", "chip", "Remote I/O error"},
                    Broken{"'kind': 'stop'", "chip", "Input/output error"},
                    Broken{"'kind': 'wrong-pec'", "chip", "Bad message"},
                    Broken{"'kind': 'corrupt'", "chip", "Bad message"},
                    Broken{"'kind': 'slow', 'ms': 10", "chip", "Connection timed out"},
                    Broken{"'kind': 'hang'", "b", "no end after"},
                    Broken{"'kind': 'sda-stuck'", "b", "Device or resource busy"},
                    Broken{"'kind': 'scl-stuck'", "chip", "Connection timed out"}));

TEST_F(ControlledServiceTest, AFanIsStalled) {
  EXPECT_THAT(control("{'command': 'fault', 'target': 'fans', 'kind': 'fan-stall'}"),
              HasSubstr("\"ok\":true"));
  EXPECT_THAT(control("{'command': 'get', 'name': 'fans.fan1.stalled'}"),
              HasSubstr("\"value\":1.0"));
  EXPECT_THAT(control("{'command': 'clear', 'what': 'fans'}"), HasSubstr("\"cleared\":1"));
  EXPECT_THAT(control("{'command': 'get', 'name': 'fans.fan1.stalled'}"),
              HasSubstr("\"value\":0.0"));
}

TEST_F(ControlledServiceTest, AFaultEndsAfterItsCountAndAfterItsTime) {
  control("{'command': 'fault', 'target': 'chip', 'kind': 'nack', 'count': 1}");
  EXPECT_THAT(read(), HasSubstr("No such device"));
  EXPECT_EQ(read(), "");
  control("{'command': 'fault', 'target': 'chip', 'kind': 'silent', 'forMs': 20}");
  while (control("{'command': 'faults'}") != R"({"ok":true,"faults":[]})") {
    std::this_thread::yield();
  }
  EXPECT_EQ(read(), "");
}

TEST_F(ControlledServiceTest, AHangKeepsNeitherTheControlSocketNorTheStop) {
  control("{'command': 'fault', 'target': 'b', 'kind': 'hang'}");
  EXPECT_THAT(read(), HasSubstr("no end after"));
  EXPECT_THAT(read(), HasSubstr("the bus hangs"));
  EXPECT_THAT(control("{'command': 'list'}"), HasSubstr("\"kind\":\"hang\""));
  service_.signal(SIGTERM);
  EXPECT_EQ(service_.wait(), 0);
}

TEST_F(ControlledServiceTest, HostileRequestsGetAnErrorEachAndDisturbNoBus) {
  LineClient hostile(service_.controlPath());
  const std::string deep(5000, '[');
  for (const std::string& line :
       {std::string("\xFF\xFE\x00garbage", 10), deep, std::string("{\"command\":1}"),
        std::string("{}"), std::string(R"({"command":"get","name":"\u0000"})"),
        std::string(R"({"command":"fault","kind":"nack","target":"chip",)"
                    R"("nth":1e99})")}) {
    hostile.say(line + "\n");
    EXPECT_THAT(hostile.hear(), Optional(HasSubstr("\"ok\":false"))) << line;
    EXPECT_EQ(read(), "");
  }
  hostile.say(std::string(2 << 20, 'x'));
  EXPECT_THAT(hostile.hear(), Optional(HasSubstr("too long")));
  EXPECT_EQ(read(), "");
}

TEST(ControlledService, AnswersAtThePathThatItsConfigurationNames) {
  ServiceProcess service;
  const std::string path = service.path("asked.sock");
  service.writeConfiguration(R"({"control": {"path": ")" + path + R"("},
    "virtual_board": "board.json",
    "buses": [{"master": "I2C", "bus": 5, "backend": {"virtual": "b"}}]})");
  service.start();
  LineClient client(path);
  client.say("{\"command\": \"faults\"}\n");
  EXPECT_THAT(client.hear(), Optional(HasSubstr("\"ok\":true")));
  EXPECT_FALSE(std::filesystem::exists(service.controlPath()));
}

}  // namespace
}  // namespace SmbusService
