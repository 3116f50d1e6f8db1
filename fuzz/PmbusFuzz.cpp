// SPDX-License-Identifier: Apache-2.0
//
// What the library makes of a PMBus supply's answers: every two bytes of the input as a number in
// each format, and the input as MFR_MODEL and MFR_SERIAL, which a bay makes a descriptor of. The
// first byte is the format's widths and the number of bytes in the first block; the blocks are as
// long as they come, whatever their counts say.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "Components/HardwareDevice.hpp"
#include "Components/Slot.hpp"
#include "Drivers/DeviceMemory.hpp"
#include "Drivers/PmbusFormat.hpp"
#include "Drivers/PsuSlot.hpp"
#include "fuzz/Identity.hpp"
#include "fuzz/Require.hpp"
#include "test/support/LinearOracle.hpp"

namespace {

constexpr uint32_t kModel = 0x9A;
constexpr uint32_t kSerial = 0x9E;

// Answers a batch of both registers with their blocks.
class Supply final : public Ham::Ham {
 public:
  Supply(std::string model, std::string serial) : blocks_{std::move(model), std::move(serial)} {}

  void prepare() override { asked_ = 0; }
  int execute() override {
    require(asked_ == 2, "both registers at once");
    return PL_STATUS_OK;
  }
  ResponseId addRead8(uint32_t reg) override { return next(reg); }
  ResponseId addRead(uint32_t reg, uint32_t length, bool) override {
    const ResponseId id = next(reg);
    require(length == get8(id) + 1u, "the block that the count announces");
    return id;
  }
  uint8_t get8(ResponseId id) override {
    return blocks_[id].empty() ? 0 : static_cast<uint8_t>(blocks_[id][0]);
  }
  std::string getBlock(ResponseId id, size_t) override { return blocks_[id]; }

 private:
  ResponseId next(uint32_t reg) {
    require(reg == (asked_ == 0 ? kModel : kSerial), "the registers in order");
    return asked_++;
  }

  const std::string blocks_[2];
  uint32_t asked_ = 0;
};

void checkNumbers(const uint8_t* data, size_t size) {
  const unsigned mantissaBits = data[0] % 16 + 1;
  const unsigned exponentBits = data[0] / 16 % 8 + 1;
  for (size_t i = 1; i + 1 < size; i += 2) {
    const auto word = static_cast<uint16_t>(data[i] | data[i + 1] << 8);
    require(Drivers::linear11ToReal(word) == Doubles::expectedLinear11(word), "LINEAR11");
    require(Drivers::linearToReal(word, data[i], static_cast<uint8_t>(mantissaBits),
                                  static_cast<uint8_t>(exponentBits)) ==
                Doubles::expectedLinear(word, data[i], mantissaBits, exponentBits),
            "linear of any widths");
    const float encoded = Drivers::linear11ToReal(Drivers::realToLinear(word));
    require(encoded <= word && word - encoded < std::max(1.0f, encoded / 256), "real to linear");
  }
}

// A bay that knows the supply, so that its texts are filled into a template.
void checkDescriptor(Supply& supply, const std::string& model) {
  Drivers::DriverArgs args;
  args.driverArgs = {{"psuId", "1"}, {"model_a", model}, {"psuFdl_a", "[{modelName}|{serialNum}]"}};
  const std::unique_ptr<Component::HardwareDevice> device(Drivers::PsuSlot::create(args, &supply));
  device->ham = &supply;
  const std::unique_ptr<Component::LogicalDevice::Slot> bay(device->newSlot(args));
  char* text = nullptr;
  require(bay->getPresence(&text) == PL_STATUS_OK, "a descriptor");
  require(std::strpbrk(text, "{}\"\\\n") == nullptr, "nothing leaves its place");
  require(text[0] == '[' && text[std::strlen(text) - 1] == ']', "the whole template");
  std::free(text);
}

void checkTexts(const uint8_t* data, size_t size) {
  const std::string bytes(data + 1, data + size);
  const std::string model = bytes.substr(0, data[0]);
  const std::string serial = bytes.substr(model.size());
  Supply supply(model, serial);
  const Identity expected = {PL_STATUS_OK, "", serial.empty() ? "" : serial.substr(1),
                             model.empty() ? "" : trimmed(model.substr(1))};
  require(identityBy(Drivers::readPmbusIdentity, supply) == expected, "the blocks' texts");
  checkDescriptor(supply, expected.model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 0) {
    checkNumbers(data, size);
    checkTexts(data, size);
  }
  return 0;
}
