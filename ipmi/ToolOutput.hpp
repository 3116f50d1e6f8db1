// SPDX-License-Identifier: Apache-2.0
//
// What FreeIPMI's programs print, read. Lines of another form are passed over: the texts come from
// a device, and names in them are whatever somebody has typed into it.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ipmi/Reading.hpp"

namespace IpmiPlugin {

// The output of "ipmi-sensors --comma-separated-output --no-header-output --output-sensor-state":
//   4,FAN2,Fan,Nominal,6000.00,RPM,'OK'
// The value of a sensor that measures is its number as printed; that of a sensor that has states
// only is "0" when one of them is critical, and otherwise "1". A sensor without a reading has no
// value, nor has one that says that its device is not there.
std::map<std::string, std::string> parseSensors(std::string_view text);

// Which direction a FRU record speaks of: that of the first mark which ends its part number, or one
// of its custom fields.
struct AirflowMark {
  std::string mark;
  std::string direction;
};

// The output of "ipmi-fru": a record for each device of which anything was read. The model is the
// product's part number, or else its name, or else the board's part number or name; the serial
// number is the product's, or else the board's.
std::map<std::string, Fru> parseFrus(std::string_view text, const std::vector<AirflowMark>& marks);

}  // namespace IpmiPlugin
