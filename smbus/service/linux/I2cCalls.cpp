// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/I2cCalls.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/ioctl.h>

extern "C" {
#include <i2c/smbus.h>
}

#include <cerrno>
#include <system_error>

#include "smbus/service/Descriptor.hpp"

namespace SmbusService {

namespace {

class Adapter : public I2cCalls {
 public:
  explicit Adapter(Descriptor device) : device_(std::move(device)) {}

  int functions(unsigned long& functions) override {
    return resultOf(::ioctl(device_.get(), I2C_FUNCS, &functions));
  }
  int set(unsigned long request, unsigned long value) override {
    return resultOf(::ioctl(device_.get(), request, value));
  }
  int smbus(uint8_t readWrite, uint8_t command, uint32_t size, i2c_smbus_data& data) override {
    const int result = ::i2c_smbus_access(device_.get(), static_cast<char>(readWrite), command,
                                          static_cast<int>(size), &data);
    return result < 0 ? -result : 0;
  }
  int transfer(i2c_rdwr_ioctl_data& messages) override {
    return resultOf(::ioctl(device_.get(), I2C_RDWR, &messages));
  }

 private:
  static int resultOf(int result) { return result < 0 ? errno : 0; }

  const Descriptor device_;
};

}  // namespace

std::unique_ptr<I2cCalls> openAdapter(uint32_t adapter) {
  const std::string path = fmt::format("/dev/i2c-{}", adapter);
  Descriptor device(::open(path.c_str(), O_RDWR | O_CLOEXEC));
  if (!device.valid()) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  return std::make_unique<Adapter>(std::move(device));
}

}  // namespace SmbusService
