// SPDX-License-Identifier: Apache-2.0
#include "tools/SmbusOperation.hpp"

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Nimbo;

std::vector<SmbusOperation> parse(const std::string& line) {
  std::istringstream stream(line);
  return parseSmbusOperations({std::istream_iterator<std::string>(stream), {}});
}

std::string fault(const std::string& line) {
  try {
    parse(line);
  } catch (const SmbusSyntaxError& error) {
    return error.what();
  }
  return "none";
}

// Notes the calls that reach the library, and answers them.
std::string calls;

template <typename... Arguments>
void note(const char* name, Arguments... arguments) {
  calls += name;
  ((calls += " " + std::to_string(arguments)), ...);
  calls += "; ";
}

void noteBytes(const char* name, unsigned char command, const unsigned char* data, unsigned size) {
  note(name, command);
  for (unsigned i = 0; i < size; ++i) {
    calls += std::to_string(data[i]) + " ";
  }
}

constexpr pl_smbus_ops kOps = {
    sizeof(pl_smbus_ops),
    nullptr,
    [](pl_smbus*, unsigned char* value) { return note("receive_byte"), *value = 0x5a, 0; },
    [](pl_smbus*, unsigned char value) { return note("send_byte", value), 0; },
    [](pl_smbus*, unsigned char command, unsigned char* value) {
      return note("read_byte", command), *value = 7, 0;
    },
    [](pl_smbus*, unsigned char command, unsigned char value) {
      return note("write_byte", command, value), 0;
    },
    [](pl_smbus*, unsigned char command, unsigned short* value) {
      return note("read_word", command), *value = 0x123, 0;
    },
    [](pl_smbus*, unsigned char command, unsigned short value) {
      return note("write_word", command, value), 0;
    },
    [](pl_smbus*, unsigned char command, unsigned char* data, unsigned int* length) {
      note("block_read", command);
      data[0] = 1;
      data[1] = 0xAB;
      *length = 2;
      return 0;
    },
    [](pl_smbus*, unsigned char command, const unsigned char* data, unsigned int length) {
      return noteBytes("block_write", command, data, length), 0;
    },
    [](pl_smbus*, unsigned char command, unsigned char* data, unsigned int length) {
      note("i2c_block_read", command, length);
      for (unsigned int i = 0; i < length; ++i) {
        data[i] = static_cast<unsigned char>(i);
      }
      return 0;
    },
    [](pl_smbus*, unsigned char command, const unsigned char* data, unsigned int length) {
      return noteBytes("i2c_block_write", command, data, length), 0;
    },
    [](pl_smbus*, unsigned char command, unsigned short value, unsigned short* result) {
      return note("process_call", command, value), *result = 0xBEEF, 0;
    },
    nullptr,
};

// The calls and the answers of a command line.
std::string run(const std::string& line) {
  pl_smbus device = {0, &kOps, nullptr};
  calls.clear();
  std::string answers;
  for (const SmbusOperation& operation : parse(line)) {
    SmbusAnswer answer;
    EXPECT_EQ(perform(operation, &device, answer), PL_STATUS_OK);
    answers += "[" + answer.text() + "]";
  }
  return calls + answers;
}

TEST(SmbusOperation, GetReadsAByteByDefault) {
  EXPECT_EQ(run("get 0x10"), "read_byte 16; [0x07]");
  EXPECT_EQ(run("get 16 b"), "read_byte 16; [0x07]");
}

TEST(SmbusOperation, GetReadsInEveryMode) {
  EXPECT_EQ(run("get 0x8b w"), "read_word 139; [0x0123]");
  EXPECT_EQ(run("get 0x9a s"), "block_read 154; [01 ab]");
  EXPECT_EQ(run("get 0 i 4"), "i2c_block_read 0 4; [00 01 02 03]");
  EXPECT_EQ(run("get 5 c"), "send_byte 5; receive_byte; [0x5a]");
  EXPECT_EQ(run("get"), "receive_byte; [0x5a]");
  EXPECT_EQ(run("get c"), "receive_byte; [0x5a]");
}

TEST(SmbusOperation, I2cBlockHas32BytesByDefault) { EXPECT_EQ(parse("get 0 i").at(0).length, 32U); }

TEST(SmbusOperation, SetWritesInEveryMode) {
  EXPECT_EQ(run("set 1 0xFF"), "write_byte 1 255; []");
  EXPECT_EQ(run("set 1 2 b"), "write_byte 1 2; []");
  EXPECT_EQ(run("set 1 0x1234 w"), "write_word 1 4660; []");
  EXPECT_EQ(run("set 1 2 3 4 s"), "block_write 1; 2 3 4 []");
  EXPECT_EQ(run("set 1 2 3 i"), "i2c_block_write 1; 2 3 []");
  EXPECT_EQ(run("set 9 c"), "send_byte 9; []");
  EXPECT_EQ(run("set 9"), "send_byte 9; []");
}

TEST(SmbusOperation, CallSendsAndReceivesAWord) {
  EXPECT_EQ(run("call 0x12 0x1234"), "process_call 18 4660; [0xbeef]");
}

TEST(SmbusOperation, SeveralOperationsRunInTheirOrder) {
  EXPECT_EQ(run("set 0 1 b get 0x8b w get 3"),
            "write_byte 0 1; read_word 139; read_byte 3; [][0x0123][0x07]");
}

TEST(SmbusOperation, FailureOfTheFirstHalfEndsAnOperation) {
  pl_smbus_ops ops = kOps;
  ops.send_byte = [](pl_smbus*, unsigned char) { return pl_status{PL_STATUS_REMOTE}; };
  pl_smbus device = {0, &ops, nullptr};
  SmbusAnswer answer;
  calls.clear();
  EXPECT_EQ(perform(parse("get 5 c").at(0), &device, answer), PL_STATUS_REMOTE);
  EXPECT_EQ(calls, "");
}

TEST(SmbusOperation, WordsThatAreNoOperationAreExplained) {
  EXPECT_EQ(fault("read 5"), "\"read\" is no operation; operations begin with get, set or call");
  EXPECT_EQ(fault("set"), "set lacks the register");
  EXPECT_EQ(fault("get b"), "get lacks the register");
  EXPECT_EQ(fault("get 256"), "\"256\" is no number from 0 to 255 (0xff)");
  EXPECT_EQ(fault("get 0x"), "\"0x\" is no number from 0 to 255 (0xff)");
  EXPECT_EQ(fault("get -1"), "\"-1\" is no number from 0 to 255 (0xff)");
  EXPECT_EQ(fault("set 1 0x100 b"), "\"0x100\" is no number from 0 to 255 (0xff)");
  EXPECT_EQ(fault("set 1 65536 w"), "\"65536\" is no number from 0 to 65535 (0xffff)");
  EXPECT_EQ(fault("set 1 2 3 b"), "set in mode b takes 1 to 1 values, not 2");
  EXPECT_EQ(fault("set 1 w"), "set in mode w takes 1 to 1 values, not 0");
  EXPECT_EQ(fault("set 1 2 c"), "set in mode c takes 0 to 0 values, not 1");
  EXPECT_EQ(fault("get 1 2"), "get in mode b takes 0 to 0 values, not 1");
  EXPECT_EQ(fault("get 1 i 256"), "\"256\" is no number from 0 to 255 (0xff)");
  EXPECT_THAT(fault("get 1 w 4"), testing::HasSubstr("a length belongs to an I2C block read"));
  EXPECT_EQ(fault("get 1 i 4 5"), "\"5\" is one word too many");
  EXPECT_THAT(fault("call 1 2 b"), testing::HasSubstr("call takes no mode letter"));
}

}  // namespace
