// SPDX-License-Identifier: Apache-2.0
//
// To be preloaded into programs that use Linux's i2c device files: /dev/i2c-N is then bus N of SCD
// 0, accelerator 0, of the SMBus service, and each I2C_SMBUS call a transaction. So i2c-tools read
// and write what is on a virtual board, and their understanding of it is nobody's here.
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "NimboUtil/PLSocket.hpp"
#include "NimboUtil/Smbus.pb.h"
#include "smbus/AddressWord.hpp"

namespace {

constexpr unsigned long kAbilities = I2C_FUNC_SMBUS_BYTE | I2C_FUNC_SMBUS_BYTE_DATA |
                                     I2C_FUNC_SMBUS_WORD_DATA | I2C_FUNC_SMBUS_BLOCK_DATA |
                                     I2C_FUNC_SMBUS_I2C_BLOCK | I2C_FUNC_SMBUS_PEC;

// The one device file that such a program opens.
struct Opened {
  int descriptor = -1;
  uint32_t bus = 0;
  uint32_t address = 0;
  bool pec = false;
};

Opened& opened() {
  static Opened file;
  return file;
}

// What a call is as a request: its type and the bytes to read or write.
struct Shape {
  Smbus::RequestType type;
  uint32_t size;
};

Shape shapeOf(const i2c_smbus_ioctl_data& call) {
  const bool read = call.read_write == I2C_SMBUS_READ;
  const Smbus::RequestType plain = read ? Smbus::Read : Smbus::Write;
  switch (call.size) {
    case I2C_SMBUS_BYTE:
      return {plain, 0};
    case I2C_SMBUS_BYTE_DATA:
      return {plain, 1};
    case I2C_SMBUS_WORD_DATA:
      return {plain, 2};
    case I2C_SMBUS_BLOCK_DATA:
      return {read ? Smbus::ReadBlock : Smbus::WriteBlock, read ? 0u : call.data->block[0]};
    default:
      return {plain, call.data->block[0]};  // I2C blocks
  }
}

bool isBlock(const i2c_smbus_ioctl_data& call) { return call.size > I2C_SMBUS_PROC_CALL; }

const char* bytesOf(const i2c_smbus_ioctl_data& call) {
  return reinterpret_cast<const char*>(isBlock(call) ? &call.data->block[1] : &call.data->byte);
}

Smbus::TransactionRequest messageOf(const i2c_smbus_ioctl_data& call) {
  const Shape shape = shapeOf(call);
  Smbus::TransactionRequest message;
  Smbus::Request& request = *message.add_request();
  uint64_t word = SmbusAddress::kRegister.set(0, call.command);
  word = SmbusAddress::kDevice.set(word, opened().address);
  word = SmbusAddress::kBus.set(word, opened().bus);
  word = SmbusAddress::kAddressSize.set(word, 1);
  word = SmbusAddress::kReadFlag.set(word, opened().pec ? 1 : 0);
  request.set_addr(word);
  request.set_type(shape.type);
  request.set_size(shape.size);
  request.set_writeflag(opened().pec);
  request.set_mastertype(Smbus::SCD);
  if (call.read_write == I2C_SMBUS_WRITE && shape.size > 0) {
    request.set_data(bytesOf(call), shape.size);  // a word's low byte comes first, as on the bus
  }
  return message;
}

void takeAnswer(const std::string& bytes, i2c_smbus_ioctl_data& call) {
  const size_t most = isBlock(call) ? I2C_SMBUS_BLOCK_MAX : sizeof call.data->word;
  const size_t size = std::min(bytes.size(), most);
  if (isBlock(call)) {
    call.data->block[0] = static_cast<__u8>(size);
  }
  std::memcpy(const_cast<char*>(bytesOf(call)), bytes.data(), size);
}

int perform(i2c_smbus_ioctl_data& call) {
  Smbus::TransactionRequest message = messageOf(call);
  PlatformLibrary::PLSocket socket;
  Smbus::TransactionResponse* answer = nullptr;
  if (socket.sendRequestWait(&message, &answer) < 0) {
    return -1;
  }
  const std::unique_ptr<Smbus::TransactionResponse> owned(answer);
  if (answer->failed()) {
    errno = ENXIO;
    return -1;
  }
  if (call.read_write == I2C_SMBUS_READ) {
    takeAnswer(answer->response(0).data(), call);
  }
  return 0;
}

int control(unsigned long request, void* argument) {
  const auto value = reinterpret_cast<uintptr_t>(argument);
  switch (request) {
    case I2C_FUNCS:
      *static_cast<unsigned long*>(argument) = kAbilities;
      return 0;
    case I2C_SLAVE:
    case I2C_SLAVE_FORCE:
      opened().address = static_cast<uint32_t>(value);
      return 0;
    case I2C_PEC:
      opened().pec = value != 0;
      return 0;
    case I2C_SMBUS:
      return perform(*static_cast<i2c_smbus_ioctl_data*>(argument));
    default:
      errno = ENOTTY;
      return -1;
  }
}

template <typename Function>
Function* systems(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  constexpr std::string_view kDevice = "/dev/i2c-";
  const std::string_view name(path);
  if (name.starts_with(kDevice)) {
    opened().bus = static_cast<uint32_t>(std::atoi(path + kDevice.size()));
    opened().descriptor = systems<int(const char*, int, ...)>("open")("/dev/null", O_RDWR);
    return opened().descriptor;
  }
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
  }
  return systems<int(const char*, int, ...)>("open")(path, flags, mode);
}

extern "C" __attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request,
                                                            ...) {
  va_list rest;
  va_start(rest, request);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  if (descriptor >= 0 && descriptor == opened().descriptor) {
    return control(request, argument);
  }
  return systems<int(int, unsigned long, ...)>("ioctl")(descriptor, request, argument);
}
