// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusSettings.hpp"

#include <fmt/format.h>

#include <string_view>

namespace SmbusService::Board {
namespace {

constexpr size_t kMostPages = 32;  // PMBus 1.2 part II, section 11.10

constexpr std::array<uint32_t, 3> kFanConfig = {0x00, 0x90, 0x99};  // by number of fans

std::vector<PmbusOutput> outputsOf(Settings& settings) {
  std::vector<PmbusOutput> outputs;
  settings.forEach("outputs", [&](const Item& item) {
    Settings output(item);
    const double volts = output.real("volts", 0, 1000, 12);
    outputs.push_back({volts, output.real("maxAmps", 0, 1000, 100)});
    output.finish();
  });
  if (outputs.size() > kMostPages) {
    settings.fail("outputs", fmt::format("at most {} outputs", kMostPages));
  }
  if (outputs.empty()) {
    settings.fail("outputs", "a supply has an output: [ { \"volts\": 12 } ]");
  }
  return outputs;
}

std::array<std::string, 6> textsOf(Settings& settings) {
  constexpr std::array<std::string_view, 6> kKeys = {"id",       "mfrModel", "revision",
                                                     "location", "date",     "serial"};
  std::array<std::string, 6> texts;
  for (size_t i = 0; i < kKeys.size(); ++i) {
    texts[i] = settings.text(kKeys[i], "");
    if (texts[i].size() > UINT8_MAX) {
      settings.fail(kKeys[i], "at most 255 characters");
    }
  }
  return texts;
}

uint8_t byte(Settings& settings, std::string_view key, uint32_t most, uint32_t absent) {
  return static_cast<uint8_t>(settings.number(key, 0, most, absent));
}

size_t checkedFans(const Settings& settings, size_t fans) {
  if (fans >= kFanConfig.size()) {
    settings.fail("fans", "at most 2 fans");
  }
  return fans;
}

}  // namespace

PmbusSettings::PmbusSettings(Settings& settings, size_t fans)
    : outputs(outputsOf(settings)),
      vin(settings.real("vin", 0, kMostVin, 230)),
      efficiency(settings.real("efficiency", 0.5, 1, 0.92)),
      voutMode(byte(settings, "voutMode", 0x1F, 0x17)),
      fanConfig(byte(settings, "fanConfig", 0xFF, kFanConfig[checkedFans(settings, fans)])),
      duty(settings.real("duty", 0, 100, 30) / 100),
      hot(settings.real("hot", 0, 200, 70)),
      texts(textsOf(settings)) {}

}  // namespace SmbusService::Board
