// SPDX-License-Identifier: Apache-2.0
//
// The texts that tests hand to the library.
#pragma once

#include <string>

namespace Doubles {

// A device description. `driverArgs` is a JSON object, `more` further members with their leading
// comma.
inline std::string describe(unsigned did, const std::string& driver,
                            const std::string& driverArgs = "{}", const std::string& more = "") {
  return R"({"did":)" + std::to_string(did) + R"(,"driver":")" + driver +
         R"(","address":{"address":16},"driverArgs":)" + driverArgs + more + "}";
}

// A device that takes no HAM, and so needs no topology.
inline std::string describeBare(unsigned did, const std::string& driver,
                                const std::string& driverArgs = "{}",
                                const std::string& more = "") {
  return describe(did, driver, driverArgs, R"(,"provideHam":0)" + more);
}

// A topology of one I2C controller that reaches these devices through HAMs of a type.
inline std::string topologyOf(const std::string& ham, const std::string& devices) {
  return R"([{"type":"I2C","ham":")" + ham + R"(","id":1,"devices":[)" + devices + "]}]";
}

}  // namespace Doubles
