// SPDX-License-Identifier: Apache-2.0
//
// The Linux back-end against the kernel itself, where its i2c-stub is loaded
// ("modprobe i2c-dev; modprobe i2c-stub chip_addr=0x50"). Elsewhere each test says that it was
// skipped.
#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <optional>

#include "smbus/service/linux/AdapterNames.hpp"
#include "smbus/service/linux/LinuxBus.hpp"

namespace SmbusService {
namespace {

using enum OperationKind;

constexpr uint8_t kFirstAddress = 0x03;
constexpr uint8_t kLastAddress = 0x77;

std::optional<uint32_t> stubAdapter() {
  for (const auto& [number, name] : adapterNames(kI2cDevices)) {
    if (name.starts_with("SMBus stub driver")) {
      return number;
    }
  }
  std::cout << "skipped: no i2c adapter\n";
  return std::nullopt;
}

Operation to(OperationKind kind, uint8_t address, uint32_t command, size_t size = 0) {
  Operation operation;
  operation.kind = kind;
  operation.address = address;
  operation.command = command;
  operation.size = size;
  return operation;
}

// The stub's bus, the first address on it that answers, and one that does not.
struct Stub {
  explicit Stub(uint32_t adapter) : bus(openAdapter(adapter), true) {
    std::string answer;
    EXPECT_EQ(openAdapter(adapter)->functions(functions), 0);
    for (uint8_t address = kFirstAddress; address <= kLastAddress; ++address) {
      const bool answers = bus.perform(to(kReadByte, address, 0), answer) == 0;
      (answers ? device : missing) = address;
    }
  }

  void write(OperationKind kind, uint32_t command, std::string_view data) {
    const std::vector<uint8_t> bytes(data.begin(), data.end());
    Operation operation = to(kind, device, command);
    operation.data = bytes;
    std::string answer;
    EXPECT_EQ(bus.perform(operation, answer), 0);
    EXPECT_EQ(answer, "");
  }
  std::string read(OperationKind kind, uint32_t command, size_t size = 0) {
    std::string answer;
    EXPECT_EQ(bus.perform(to(kind, device, command, size), answer), 0);
    return answer;
  }

  LinuxBus bus;
  unsigned long functions = 0;
  uint8_t device = 0;
  uint8_t missing = 0;
};

// Runs `test` on the stub, if there is one.
template <typename Test>
void onStub(Test test) {
  if (const std::optional<uint32_t> adapter = stubAdapter()) {
    Stub stub(*adapter);
    test(stub);
  }
}

TEST(RealAdapter, BytesAndWordsReadBackAsWritten) {
  onStub([](Stub& stub) {
    stub.write(kWriteByte, 0x10, "a");
    stub.write(kWriteWord, 0x20, "bc");
    EXPECT_EQ(stub.read(kReadByte, 0x10), "a");
    EXPECT_EQ(stub.read(kReadWord, 0x20), "bc");
  });
}

TEST(RealAdapter, I2cBlocksReadBackAsWritten) {
  onStub([](Stub& stub) {
    stub.write(kWriteI2cBlock, 0x40, "0123456789abcdef0123456789abcdef");
    stub.write(kWriteI2cBlock, 0x60, "ghijklmn");
    EXPECT_EQ(stub.read(kReadI2cBlock, 0x40, 5), "01234");
    EXPECT_EQ(stub.read(kReadI2cBlock, 0x40, 40), "0123456789abcdef0123456789abcdefghijklmn");
  });
}

TEST(RealAdapter, SmbusBlocksReadBackAsWritten) {
  onStub([](Stub& stub) {
    std::string answer;
    if ((stub.functions & I2C_FUNC_SMBUS_READ_BLOCK_DATA) == 0) {
      EXPECT_EQ(stub.bus.perform(to(kReadBlock, stub.device, 0x80), answer), EOPNOTSUPP);
      return;
    }
    stub.write(kWriteBlock, 0x80, "block");
    EXPECT_EQ(stub.read(kReadBlock, 0x80), "block");
  });
}

TEST(RealAdapter, ASentByteSetsTheRegisterThatAReceivedOneComesFrom) {
  onStub([](Stub& stub) {
    stub.write(kWriteByte, 0x33, "z");
    std::string answer;
    EXPECT_EQ(stub.bus.perform(to(kSendByte, stub.device, 0x33), answer), 0);
    EXPECT_EQ(stub.read(kReceiveByte, 0), "z");
  });
}

TEST(RealAdapter, AnAddressWithoutADeviceDoesNotAnswer) {
  onStub([](Stub& stub) {
    std::string answer;
    EXPECT_EQ(stub.bus.perform(to(kReadByte, stub.missing, 0), answer), ENODEV);
  });
}

TEST(RealAdapter, TimeoutsAreAccepted) {
  onStub([](Stub& stub) {
    Operation operation = to(kReadByte, stub.device, 0);
    operation.timeout = std::chrono::milliseconds(20);
    std::string answer;
    EXPECT_EQ(stub.bus.perform(operation, answer), 0);
  });
}

TEST(RealAdapter, AWideRegisterIsNotSupportedByTheStub) {
  onStub([](Stub& stub) {
    Operation operation = to(kReadByte, stub.device, 0x1234);
    operation.commandBytes = 2;
    std::string answer;
    EXPECT_EQ(stub.bus.perform(operation, answer), EOPNOTSUPP);
  });
}

}  // namespace
}  // namespace SmbusService
