// SPDX-License-Identifier: Apache-2.0
//
// An LED's setting can be given and not asked for. What is lit shows in output bits of its chip,
// which the board description names as the LED's "lamps"; they are read as GPIO lines.
#include "pl/pl_led.h"

#include <deque>
#include <vector>

#include "config/JsonValue.hpp"
#include "pl/pl_gpio.h"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

struct Lamp {
  std::string colour;
  pl_gpio* line;
};

using Lamps = std::vector<Lamp>;

Lamps addLamps(const Library& library, const Board& board, const Entry& entry) {
  Lamps lamps;
  const rapidjson::Value* const nodes = Config::member(entry.node, "lamps");
  for (rapidjson::SizeType i = 0; nodes != nullptr && i < nodes->Size(); ++i) {
    const rapidjson::Value& node = (*nodes)[i];
    const std::string line = board.description(entry, &node);
    lamps.push_back({node["colour"].GetString(),
                     library.function<decltype(pl_gpio_add)>("pl_gpio_add")(line.c_str())});
  }
  return lamps;
}

// The lamps live as long as the records, for the life of the process; a record's host word is the
// place of its own.
std::deque<Lamps>& allLamps() {
  static std::deque<Lamps> all;
  return all;
}

Record add(const Library& library, const Board& board, const Entry& entry) {
  pl_led* const led =
      library.function<decltype(pl_led_add)>("pl_led_add")(board.description(entry).c_str());
  if (led != nullptr) {
    led->host = allLamps().size();
    allLamps().push_back(addLamps(library, board, entry));
  }
  return led;
}

// The colours that are lit, "off" for none; nothing for an LED that shows no lamps.
Reading light(Record record, const Entry&) {
  const Lamps& lamps = allLamps()[static_cast<pl_led*>(record)->host];
  std::string lit;
  for (const Lamp& lamp : lamps) {
    unsigned int level = 0;
    const pl_status status = lamp.line == nullptr ? PL_STATUS_UNSUPPORTED
                                                  : call(lamp.line, &pl_gpio_ops::bit_read, &level);
    if (status != PL_STATUS_OK) {
      return {status, {}};
    }
    lit += level == 0 ? "" : (lit.empty() ? "" : "+") + lamp.colour;
  }
  if (lamps.empty()) {
    return {};
  }
  return {PL_STATUS_OK, lit.empty() ? "off" : lit};
}

constexpr Column kColumns[] = {{"light", "LIGHT", "", 0, light}};

}  // namespace

constinit const Kind kLeds = {"leds", "leds", "LEDs", "fault", add, kColumns};

}  // namespace Nimbo
