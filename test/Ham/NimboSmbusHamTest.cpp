// SPDX-License-Identifier: Apache-2.0
#include "Ham/NimboSmbusHam.hpp"

#include <gmock/gmock.h>

#include <exception>
#include <ostream>
#include <string>

#include "test/support/Check.hpp"
#include "test/support/Host.hpp"
#include "test/support/SmbusLibrary.hpp"

namespace {

using Doubles::answer;
using Doubles::host;
using Doubles::rawBytes;
using Doubles::Reply;
using Doubles::request;
using Doubles::ScriptedService;
using Doubles::silence;
using Ham::NimboSmbusHam;
using testing::Contains;
using testing::ElementsAre;

using Id = NimboSmbusHam::ResponseId;

// Device 7 has the address 0x48 on bus 3, so that its address word is 0x020001C800000000 and the
// register.
constexpr const char* kPlainDevice = R"([{
  "type": "I2C", "ham": "NimboSmbus", "id": 3,
  "devices": [{"did": 7, "driver": "Dummy", "address": {"address": 72}}]
}])";

class NimboSmbusHamTest : public testing::Test {
 protected:
  // A batch of one byte read from register 5, answered so.
  int readAnsweredBy(Reply reply) {
    service.expect(request("type: Read addr: 0x020001C800000005 size: 1 writeFlag: false"),
                   std::move(reply));
    ham.prepare();
    ham.addRead8(5);
    return ham.execute();
  }

  Doubles::SmbusLibrary library{kPlainDevice};
  ScriptedService& service = library.service;
  NimboSmbusHam& ham = Doubles::SmbusLibrary::hamOf(7);
};

// Every operation, and the fields of its request.
struct OperationCase {
  const char* name;
  Id (*add)(NimboSmbusHam& ham);
  const char* fields;
};

std::ostream& operator<<(std::ostream& out, const OperationCase& each) { return out << each.name; }

const OperationCase kOperations[] = {
    {"RecvByte", [](NimboSmbusHam& ham) { return ham.addRecvByte(); },
     "type: Read addr: 0x020001C800000000 size: 0 writeFlag: false"},
    {"Read8", [](NimboSmbusHam& ham) { return ham.addRead8(0x12); },
     "type: Read addr: 0x020001C800000012 size: 1 writeFlag: false"},
    {"Read8OfAWideRegister", [](NimboSmbusHam& ham) { return ham.addRead8(0x89ABCDEF); },
     "type: Read addr: 0x020001C889ABCDEF size: 1 writeFlag: false"},
    {"Read16", [](NimboSmbusHam& ham) { return ham.addRead16(0x34); },
     "type: Read addr: 0x020001C800000034 size: 2 writeFlag: false"},
    {"Read", [](NimboSmbusHam& ham) { return ham.addRead(0x56, 300, false); },
     "type: Read addr: 0x020001C800000056 size: 300 writeFlag: false"},
    {"ReadWithFlag", [](NimboSmbusHam& ham) { return ham.addRead(0x56, 8, true); },
     "type: Read addr: 0x022001C800000056 size: 8 writeFlag: false"},
    {"ReadBlock", [](NimboSmbusHam& ham) { return ham.addReadBlock(0x78); },
     "type: ReadBlock addr: 0x020001C800000078 size: 0 writeFlag: false"},
    {"SendByte", [](NimboSmbusHam& ham) { return ham.addSendByte(0x55, false); },
     "type: Write addr: 0x020001C800000055 size: 0 writeFlag: false"},
    {"SendByteWithFlag", [](NimboSmbusHam& ham) { return ham.addSendByte(0x55, true); },
     "type: Write addr: 0x020001C800000055 size: 0 writeFlag: true"},
    {"Write8", [](NimboSmbusHam& ham) { return ham.addWrite8(0x9A, 0x00, false); },
     "type: Write addr: 0x020001C80000009A size: 1 writeFlag: false data: '\\x00'"},
    {"Write8WithFlag", [](NimboSmbusHam& ham) { return ham.addWrite8(0x9A, 0xFE, true); },
     "type: Write addr: 0x020001C80000009A size: 1 writeFlag: true data: '\\xFE'"},
    {"Write16", [](NimboSmbusHam& ham) { return ham.addWrite16(0xBC, 0x1234, false); },
     "type: Write addr: 0x020001C8000000BC size: 2 writeFlag: false data: '\\x34\\x12'"},
    {"Write16WithFlag", [](NimboSmbusHam& ham) { return ham.addWrite16(0xBC, 0x8001, true); },
     "type: Write addr: 0x020001C8000000BC size: 2 writeFlag: true data: '\\x01\\x80'"},
    {"Write", [](NimboSmbusHam& ham) { return ham.addWrite(0xDE, "a\0b", 3, false); },
     "type: Write addr: 0x020001C8000000DE size: 3 writeFlag: false data: 'a\\0b'"},
    {"WriteWithFlag", [](NimboSmbusHam& ham) { return ham.addWrite(0xDE, "xyz", 3, true); },
     "type: Write addr: 0x020001C8000000DE size: 3 writeFlag: true data: 'xyz'"},
    {"WriteOfNothing", [](NimboSmbusHam& ham) { return ham.addWrite(0xDE, "", 0, false); },
     "type: Write addr: 0x020001C8000000DE size: 0 writeFlag: false data: ''"},
    {"WriteBlock", [](NimboSmbusHam& ham) { return ham.addWriteBlock(0xF0, "pqrs", 4, false); },
     "type: WriteBlock addr: 0x020001C8000000F0 size: 4 writeFlag: false data: 'pqrs'"},
    {"WriteBlockWithFlag", [](NimboSmbusHam& ham) { return ham.addWriteBlock(0xF0, "t", 1, true); },
     "type: WriteBlock addr: 0x020001C8000000F0 size: 1 writeFlag: true data: 't'"},
    {"ProcessCall", [](NimboSmbusHam& ham) { return ham.addProcessCall(0x11, 0xCAFE); },
     "type: ProcessCall addr: 0x020001C800000011 size: 2 writeFlag: false data: '\\xFE\\xCA'"},
};

class NimboSmbusHamOperation : public NimboSmbusHamTest,
                               public testing::WithParamInterface<OperationCase> {};

TEST_P(NimboSmbusHamOperation, IsExactlyThisRequest) {
  service.expect(request(GetParam().fields), answer("response {}"));
  ham.prepare();
  EXPECT_EQ(GetParam().add(ham), 0u);
  EXPECT_EQ(ham.execute(), 0);
}

INSTANTIATE_TEST_SUITE_P(Every, NimboSmbusHamOperation, testing::ValuesIn(kOperations),
                         [](const auto& each) { return each.param.name; });

TEST_F(NimboSmbusHamTest, BatchIsOneMessageInOrder) {
  service.expect(
      request("type: Write addr: 0x020001C800000001 size: 1 writeFlag: false data: 'a'") +
          request("type: Read addr: 0x020001C800000002 size: 2 writeFlag: false") +
          request("type: Read addr: 0x020001C800000003 size: 1 writeFlag: false"),
      answer("response {} response { data: '\\x34\\x12' } response { data: 'c' }"));
  ham.prepare();
  EXPECT_EQ(ham.addWrite8(1, 'a', false), 0u);
  EXPECT_EQ(ham.addRead16(2), 1u);
  EXPECT_EQ(ham.addRead8(3), 2u);
  EXPECT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(2), 'c');
  EXPECT_EQ(ham.get16(1), 0x1234);
  EXPECT_EQ(ham.getBlock(1, 0), "\x34\x12");
}

TEST_F(NimboSmbusHamTest, EveryBatchStartsEmptyAndCountsFromZero) {
  service.expect(request("type: Write addr: 0x020001C800000001 size: 1 writeFlag: true data: 'a'") +
                     request("type: Read addr: 0x022001C800000002 size: 9 writeFlag: false"),
                 answer("response {} response { data: '123456789' }"));
  service.expect(request("type: Read addr: 0x020001C800000003 size: 1 writeFlag: false"),
                 answer("response { data: 'c' }"));
  ham.prepare();
  ham.addWrite8(1, 'a', true);
  ham.addRead(2, 9, true);
  ASSERT_EQ(ham.execute(), 0);
  ham.prepare();
  EXPECT_EQ(ham.addRead8(3), 0u);
  ASSERT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(0), 'c');
}

TEST_F(NimboSmbusHamTest, EmptyBatchIsSentToo) {
  service.expect("", answer(""));
  ham.prepare();
  EXPECT_EQ(ham.execute(), 0);
}

TEST_F(NimboSmbusHamTest, EachExecuteLeavesOneTrace) {
  host().traces.clear();
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  EXPECT_THAT(host().traces, ElementsAre(Doubles::Trace{4, "executing NimboSmbusHam request"}));
}

TEST_F(NimboSmbusHamTest, RetryCountIsAbsentUntilItIsSetAndThenInEveryTransaction) {
  const std::string read = request("type: Read addr: 0x020001C800000005 size: 1 writeFlag: false");
  service.expect(read, answer("response { data: 'x' }"));
  service.expect(read + "retryCount: 0", answer("response { data: 'x' }"));
  service.expect(read + "retryCount: 0", answer("response { data: 'x' }"));
  service.expect(read + "retryCount: 4", answer("response { data: 'x' }"));
  uint8_t value;
  EXPECT_EQ(ham.read8(5, &value), 0);
  ham.retryCountIs(0);
  EXPECT_EQ(ham.read8(5, &value), 0);
  EXPECT_EQ(ham.read8(5, &value), 0);
  ham.retryCountIs(4);
  EXPECT_EQ(ham.read8(5, &value), 0);
}

TEST_F(NimboSmbusHamTest, ReadBlockReturnsAllBytesTheServiceSent) {
  service.expect(request("type: ReadBlock addr: 0x020001C800000020 size: 0 writeFlag: false"),
                 answer("response { data: 'seven!!' }"));
  std::string block;
  EXPECT_EQ(ham.readBlock(0x20, &block), 0);
  EXPECT_EQ(block, "seven!!");
}

TEST_F(NimboSmbusHamTest, BlockIsGivenWholeWhateverLengthIsAskedFor) {
  service.expect(request("type: Read addr: 0x020001C800000020 size: 4 writeFlag: false"),
                 answer("response { data: 'longer' }"));
  ham.prepare();
  ham.addRead(0x20, 4, false);
  ASSERT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.getBlock(0, 4), "longer");
  EXPECT_EQ(ham.getBlock(0, 100), "longer");
}

TEST_F(NimboSmbusHamTest, WidestValuesComeThrough) {
  service.expect(request("type: Read addr: 0x020001C800000001 size: 1 writeFlag: false") +
                     request("type: Read addr: 0x020001C800000002 size: 2 writeFlag: false"),
                 answer("response { data: '\\xFF' } response { data: '\\xFE\\xFF' }"));
  ham.prepare();
  ham.addRead8(1);
  ham.addRead16(2);
  ASSERT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(0), 0xFF);
  EXPECT_EQ(ham.get16(1), 0xFFFE);
}

TEST_F(NimboSmbusHamTest, AddressAndBusAreCutToSevenBits) {
  ham.setAddress(0xC9);
  ham.setBus(0x85);
  EXPECT_EQ(ham.getAddress(), 0x49);
  EXPECT_EQ(ham.getBus(), 5);
  service.expect(request("type: Read addr: 0x020002C900000001 size: 1 writeFlag: false"),
                 answer("response { data: 'x' }"));
  uint8_t value;
  EXPECT_EQ(ham.read8(1, &value), 0);
}

TEST_F(NimboSmbusHamTest, WideAccessThrowsBeforeAnythingIsSent) {
  uint32_t value = 17;
  try {
    ham.read32(5, &value);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Not implemented addRead32");
  }
  EXPECT_EQ(value, 17u);
  EXPECT_TRUE(service.requests().empty());
}

// Devices behind muxes.

// Device 12 sits behind channel 8 of mux 11 (0x71), which sits behind channel 4 of mux 10 (0x70).
// On accelerator 1 and bus 2 the upper half of an address word is 0x02004100 and the address.
constexpr const char* kNestedMuxes = R"([{
  "type": "SCD", "ham": "NimboSmbus", "pci": 9472,
  "accelerators": [{"id": 1, "busses": [{
    "id": 2,
    "devices": [{"did": 10, "driver": "PCA9548", "address": {"address": 112}}],
    "muxes": [{"did": 10, "busses": [{
      "id": 4,
      "devices": [{"did": 11, "driver": "GenericSmbusMux", "address": {"address": 113}}],
      "muxes": [{"did": 11, "busses": [{
        "id": 8,
        "devices": [{"did": 12, "driver": "Dummy",
                     "address": {"address": 72, "busTimeout": 3}}]
      }]}]
    }]}]
  }]}]
}])";

std::string scd(const char* fields) {
  return request(fields, "controllerAddr: 0x2500 mastertype: SCD");
}

// The mux requests carry the device's own time-out (3, in bits 54 to 56).
const std::string kSelectOuter =
    scd("type: Write addr: 0x02C0417000000004 size: 0 writeFlag: false");
const std::string kSelectInner =
    scd("type: Write addr: 0x02C0417100000008 size: 0 writeFlag: false");
const std::string kResetInner =
    scd("type: Write addr: 0x02C0417100000000 size: 0 writeFlag: false");
const std::string kResetOuter =
    scd("type: Write addr: 0x02C0417000000000 size: 0 writeFlag: false");
const std::string kReadByte5 = scd("type: Read addr: 0x02C0414800000005 size: 1 writeFlag: false");
const std::string kReadWord6 = scd("type: Read addr: 0x02C0414800000006 size: 2 writeFlag: false");

class NestedMuxes : public testing::Test {
 protected:
  Doubles::SmbusLibrary library{kNestedMuxes};
  ScriptedService& service = library.service;
  NimboSmbusHam& ham = Doubles::SmbusLibrary::hamOf(12);
};

TEST_F(NestedMuxes, AreSelectedFromTheControllerOutAndResetInReverse) {
  service.expect(kSelectOuter + kSelectInner + kReadByte5 + kResetInner + kResetOuter,
                 answer("response {} response {} response { data: 'x' } response {} response {}"));
  ham.prepare();
  const Id id = ham.addRead8(5);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(id), 'x');
}

TEST_F(NestedMuxes, AreSelectedOnceForAWholeBatch) {
  service.expect(kSelectOuter + kSelectInner + kReadByte5 + kReadWord6 + kResetInner + kResetOuter,
                 answer("response {} response {} response { data: 'x' } response { data: 'yz' } "
                        "response {} response {}"));
  ham.prepare();
  ham.addRead8(5);
  ham.addRead16(6);
  EXPECT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(0), 'x');
  EXPECT_EQ(ham.get16(1), 'y' | 'z' << 8);
}

TEST_F(NestedMuxes, AreSelectedAndResetInEveryBatch) {
  for (int batch = 0; batch < 3; ++batch) {
    service.expect(
        kSelectOuter + kSelectInner + kReadByte5 + kResetInner + kResetOuter,
        answer("response {} response {} response { data: 'x' } response {} response {}"));
  }
  uint8_t value;
  EXPECT_EQ(ham.read8(5, &value), 0);
  EXPECT_EQ(ham.read8(5, &value), 0);
  EXPECT_EQ(ham.read8(5, &value), 0);
}

TEST_F(NestedMuxes, DoNotKeepAFailedBatchsRequests) {
  const std::string batch = kSelectOuter + kSelectInner + kReadByte5 + kResetInner + kResetOuter;
  service.expect(batch, answer("failed: true"));
  service.expect(batch,
                 answer("response {} response {} response { data: 'x' } response {} response {}"));
  uint8_t value;
  EXPECT_EQ(ham.read8(5, &value), 6);
  EXPECT_EQ(ham.read8(5, &value), 0);
}

TEST_F(NestedMuxes, CountAmongTheResponses) {
  service.expectAny(answer("response { data: 'x' }"));
  uint8_t value;
  EXPECT_EQ(ham.read8(5, &value), 6);
  EXPECT_THAT(host().texts(3),
              Contains("execute: invalid number of response entries; expected 5, got 1"));
}

TEST_F(NestedMuxes, HideNoResponseThatIsNotTheCallers) {
  service.expectAny(
      answer("response {} response {} response { data: 'x' } response { data: 'y' } response {}"));
  ham.prepare();
  ham.addRead8(5);
  ASSERT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(0), 'x');
  EXPECT_EQ(ham.get8(1), 'y');  // of the first reset
  EXPECT_CHECK(ham.get8(3), "Ham/NimboSmbusHam",
               "( uint32_t )response_.response_size() > prepareRequestCount_ + idx");
}

TEST_F(NestedMuxes, LeaveTheHamAtItsOwnAddress) {
  service.expectAny(
      answer("response {} response {} response { data: 'x' } response {} response {}"));
  uint8_t value;
  EXPECT_EQ(ham.read8(5, &value), 0);
  EXPECT_EQ(ham.getAddress(), 0x48);
  EXPECT_EQ(ham.getBus(), 2);
}

TEST_F(NestedMuxes, AreReachedThroughTheMuxesAboveThemAlone) {
  service.expect(scd("type: Write addr: 0x0200417000000004 size: 0 writeFlag: false") +
                     scd("type: Read addr: 0x0200417100000000 size: 0 writeFlag: false") +
                     scd("type: Write addr: 0x0200417000000000 size: 0 writeFlag: false"),
                 answer("response {} response { data: '\\x08' } response {}"));
  uint8_t value;
  EXPECT_EQ(Doubles::SmbusLibrary::hamOf(11).recvByte(&value), 0);
  EXPECT_EQ(value, 8);
}

// Failures.

TEST_F(NimboSmbusHamTest, UnreachableServiceIsStatus4WithTheError) {
  service.stop();
  ham.prepare();
  ham.addRead8(5);
  EXPECT_EQ(ham.execute(), 4);
  EXPECT_THAT(host().texts(3), Contains("execute: error. 2, No such file or directory"));
}

TEST_F(NimboSmbusHamTest, BrokenConnectionIsStatus4WithTheError) {
  EXPECT_EQ(readAnsweredBy(silence().thenHangUp()), 4);
  EXPECT_THAT(host().texts(3), Contains("execute: error. 104, Connection reset by peer"));
}

TEST_F(NimboSmbusHamTest, AnswerThatIsNoMessageIsStatus4WithTheError) {
  EXPECT_EQ(readAnsweredBy(rawBytes(std::string("\0\0\0\2\xFF\xFF", 6))), 4);
  EXPECT_THAT(host().texts(3), Contains("execute: error. 71, Protocol error"));
}

TEST_F(NimboSmbusHamTest, NextBatchAfterABrokenConnectionSucceeds) {
  ASSERT_EQ(readAnsweredBy(silence().thenHangUp()), 4);
  EXPECT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  EXPECT_EQ(ham.get8(0), 'x');
}

TEST_F(NimboSmbusHamTest, FailureIsStatus6WithTheReason) {
  EXPECT_EQ(readAnsweredBy(answer("failed: true reason: 'request 0: no answer from 0x48'")), 6);
  EXPECT_THAT(host().texts(3),
              Contains("execute: failure in response request 0: no answer from 0x48"));
}

TEST_F(NimboSmbusHamTest, FailureWithoutReasonHasAnUnknownOne) {
  EXPECT_EQ(readAnsweredBy(answer("failed: true")), 6);
  EXPECT_THAT(host().texts(3), Contains("execute: failure in response unknown reason"));
}

TEST_F(NimboSmbusHamTest, FailureCountsThoughEveryResponseIsThere) {
  EXPECT_EQ(readAnsweredBy(answer("response { data: 'x' } failed: true reason: 'late'")), 6);
  EXPECT_THAT(host().texts(3), Contains("execute: failure in response late"));
}

TEST_F(NimboSmbusHamTest, FailedFalseIsNoFailure) {
  EXPECT_EQ(readAnsweredBy(answer("response { data: 'x' } failed: false reason: 'none'")), 0);
}

TEST_F(NimboSmbusHamTest, TooFewResponsesAreStatus6) {
  EXPECT_EQ(readAnsweredBy(answer("")), 6);
  EXPECT_THAT(host().texts(3),
              Contains("execute: invalid number of response entries; expected 1, got 0"));
}

TEST_F(NimboSmbusHamTest, TooManyResponsesAreStatus6) {
  EXPECT_EQ(readAnsweredBy(answer("response { data: 'x' } response {}")), 6);
  EXPECT_THAT(host().texts(3),
              Contains("execute: invalid number of response entries; expected 1, got 2"));
}

TEST_F(NimboSmbusHamTest, FailedReadLeavesItsOutputAlone) {
  service.expectAny(answer("failed: true"));
  uint8_t value = 0xA5;
  EXPECT_EQ(ham.read8(5, &value), 6);
  EXPECT_EQ(value, 0xA5);
}

// Misuse.

TEST_F(NimboSmbusHamTest, InvalidIdStopsTheProcess) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  const Id invalid = NimboSmbusHam::INVALID_RESPONSE_ID;
  EXPECT_CHECK(ham.get8(invalid), "Ham/NimboSmbusHam", "idx != INVALID_RESPONSE_ID");
  EXPECT_CHECK(ham.get16(invalid), "Ham/NimboSmbusHam", "idx != INVALID_RESPONSE_ID");
  EXPECT_CHECK(ham.getBlock(invalid, 1), "Ham/NimboSmbusHam", "idx != INVALID_RESPONSE_ID");
}

constexpr const char* kNoSuchResponse =
    "( uint32_t )response_.response_size() > prepareRequestCount_ + idx";

TEST_F(NimboSmbusHamTest, ResponseThatIsNotThereStopsTheProcess) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  EXPECT_CHECK(ham.get8(1), "Ham/NimboSmbusHam", kNoSuchResponse);
  EXPECT_CHECK(ham.get16(1), "Ham/NimboSmbusHam", kNoSuchResponse);
  EXPECT_CHECK(ham.getBlock(1, 1), "Ham/NimboSmbusHam", kNoSuchResponse);
}

TEST_F(NimboSmbusHamTest, NothingIsLeftToGetAfterASocketFailure) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  ASSERT_EQ(readAnsweredBy(silence().thenHangUp()), 4);
  EXPECT_CHECK(ham.get8(0), "Ham/NimboSmbusHam", kNoSuchResponse);
}

TEST_F(NimboSmbusHamTest, PrepareForgetsTheResultsOfTheLastBatch) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  ham.prepare();
  EXPECT_CHECK(ham.get8(0), "Ham/NimboSmbusHam", kNoSuchResponse);
}

TEST_F(NimboSmbusHamTest, ByteOfAnotherWidthStopsTheProcess) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'xy' }")), 0);
  EXPECT_CHECK(ham.get8(0), "Ham/NimboSmbusHam", "data.size() == 1");
  ASSERT_EQ(readAnsweredBy(answer("response {}")), 0);
  EXPECT_CHECK(ham.get8(0), "Ham/NimboSmbusHam", "data.size() == 1");
}

TEST_F(NimboSmbusHamTest, WordOfAnotherWidthStopsTheProcess) {
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'x' }")), 0);
  EXPECT_CHECK(ham.get16(0), "Ham/NimboSmbusHam", "data.size() == 2");
  ASSERT_EQ(readAnsweredBy(answer("response { data: 'xyz' }")), 0);
  EXPECT_CHECK(ham.get16(0), "Ham/NimboSmbusHam", "data.size() == 2");
}

TEST(SmbusRequest, ValueOutsideAnEnumStopsTheProcess) {
  Smbus::Request request;
  EXPECT_DEATH(request.set_type(static_cast<Smbus::RequestType>(5)),
               R"(::Smbus::RequestType_IsValid\(value\))");
  EXPECT_DEATH(request.set_mastertype(static_cast<Smbus::MasterType>(7)),
               R"(::Smbus::MasterType_IsValid\(value\))");
}

}  // namespace
