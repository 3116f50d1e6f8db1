// SPDX-License-Identifier: Apache-2.0
//
// What one look at a management controller gives, and who looks.
#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "ipmi/Stop.hpp"

namespace IpmiPlugin {

// A FRU inventory record. A text that the record lacks is empty.
struct Fru {
  std::string model;
  std::string serial;
  std::string airflow;  // a direction, as fan descriptors name it

  bool operator==(const Fru&) const = default;
};

// Keys are upper case.
struct Reading {
  std::map<std::string, std::string> sensors;  // only sensors that have a value
  std::map<std::string, Fru> frus;             // only records that could be read
};

// The controller gave no reading. what() is one line for the operator.
class ReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Reader {
 public:
  virtual ~Reader() = default;

  // Looks once; may take seconds, and ends soon after `stop` was requested. Throws ReadError.
  virtual Reading read(const Stop& stop) = 0;
};

}  // namespace IpmiPlugin
