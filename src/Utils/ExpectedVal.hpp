// SPDX-License-Identifier: Apache-2.0
//
// The value that a register of a simulated device starts with.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace Utils {

// A number of `size` bytes (1 or 2), or a text of exactly `size` characters.
class ExpectedVal {
 public:
  // A number is the meaningful value for every kind but 0, which stands for a text.
  ExpectedVal(uint64_t value, uint64_t size, uint64_t kind = 1)
      : value_(value), size_(size), kind_(kind) {}
  ExpectedVal(std::string text, uint64_t size) : text_(std::move(text)), size_(size), kind_(0) {}

  // A copy carries size and kind, and of the two values the one that the kind says counts.
  ExpectedVal(const ExpectedVal& other) : size_(other.size_), kind_(other.kind_) {
    copyValue(other);
  }
  ExpectedVal& operator=(const ExpectedVal& other) {
    if (this != &other) {
      size_ = other.size_;
      kind_ = other.kind_;
      copyValue(other);
    }
    return *this;
  }
  virtual ~ExpectedVal() = default;

  bool isNumber() const { return kind_ != 0; }
  uint64_t val() const { return value_; }
  const std::string& valStr() const { return text_; }
  uint64_t size() const { return size_; }

 private:
  void copyValue(const ExpectedVal& other) {
    if (isNumber()) {
      value_ = other.value_;
    } else {
      text_ = other.text_;
    }
  }

  uint64_t value_ = 0;
  std::string text_;
  uint64_t size_;
  uint64_t kind_;
};

// Register number to starting value.
using ExpectedVals = std::map<unsigned int, ExpectedVal>;

}  // namespace Utils
