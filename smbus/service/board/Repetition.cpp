// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Repetition.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace SmbusService::Board {
namespace {

constexpr uint32_t kMostValue = 65'535;    // of a variable
constexpr size_t kMostRepetitions = 4096;  // of one object
constexpr int kDeepest = 16;               // parentheses in each other

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// An expression, read from the left:
//   sum      product { (+|-) product }
//   product  factor { (*|/|%) factor }
//   factor   number | variable | ( sum )
class Expression {
 public:
  using Values = std::map<std::string, uint32_t, std::less<>>;

  Expression(std::string_view text, const Values& values, const Item& where)
      : text_(text), rest_(text), values_(values), where_(where) {}

  int64_t value() {
    const int64_t result = sum();
    if (!rest_.empty()) {
      fail(fmt::format("\"{}\" is left over", rest_));
    }
    if (result < 0) {
      fail(fmt::format("it is {}, below 0", result));
    }
    return result;
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    where_.fail(fmt::format("\"{{{}}}\": {}", text_, reason));
  }

  bool take(char c) {
    if (rest_.empty() || rest_.front() != c) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view takeWhile(bool (*belongs)(char)) {
    const auto end = std::ranges::find_if_not(rest_, belongs);
    const auto length = static_cast<size_t>(end - rest_.begin());
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return taken;
  }

  int64_t bounded(int64_t number) const {
    if (number > Variables::kMost || number < -Variables::kMost) {
      fail("a number is too large");
    }
    return number;
  }

  int64_t sum() {
    int64_t result = product();
    for (;;) {
      if (take('+')) {
        result = bounded(result + product());
      } else if (take('-')) {
        result = bounded(result - product());
      } else {
        return result;
      }
    }
  }

  int64_t product() {
    int64_t result = factor();
    for (;;) {
      if (take('*')) {
        result = bounded(result * factor());
      } else if (take('/')) {
        result /= divisor();
      } else if (take('%')) {
        result %= divisor();
      } else {
        return result;
      }
    }
  }

  int64_t divisor() {
    const int64_t number = factor();
    if (number == 0) {
      fail("it divides by 0");
    }
    return number;
  }

  int64_t factor() {
    if (take('(')) {
      return parenthesis();
    }
    if (const std::string_view digits = takeWhile(isDigit); !digits.empty()) {
      return number(digits);
    }
    if (const std::string_view name = takeWhile(isLetter); !name.empty()) {
      return variable(name);
    }
    fail(rest_.empty() ? "a number or a variable is missing at its end"
                       : fmt::format("a number or a variable is missing before \"{}\"", rest_));
  }

  int64_t parenthesis() {
    if (++depth_ > kDeepest) {
      fail("too many parentheses");
    }
    const int64_t result = sum();
    if (!take(')')) {
      fail("a \")\" is missing");
    }
    --depth_;
    return result;
  }

  int64_t number(std::string_view digits) const {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() ? bounded(value) : bounded(Variables::kMost + 1);
  }

  int64_t variable(std::string_view name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) {
      fail(fmt::format("there is no variable \"{}\" in \"{}\"", name, kRepetitionKey));
    }
    return found->second;
  }

  std::string_view text_;
  std::string_view rest_;
  const Values& values_;
  const Item& where_;
  int depth_ = 0;
};

}  // namespace

std::string Variables::fill(std::string_view text, const Item& where) const {
  std::string filled;
  for (size_t open = text.find('{'); open != std::string_view::npos; open = text.find('{')) {
    const size_t close = text.find('}', open);
    if (close == std::string_view::npos) {
      where.fail(fmt::format("\"{}\" lacks a \"}}\"", text));
    }
    filled += text.substr(0, open);
    filled +=
        std::to_string(Expression(text.substr(open + 1, close - open - 1), values_, where).value());
    text.remove_prefix(close + 1);
  }
  return filled += text;
}

void repeat(const Item& item, const std::function<void(const Variables&)>& visit) {
  std::vector<Variables> all(1);
  Settings settings(item);
  settings.forEachMember(kRepetitionKey, [&](const std::string& name, const Item& values) {
    if (name.empty() || !std::ranges::all_of(name, isLetter)) {
      values.fail("a variable's name is of letters");
    }
    const Range range = values.range(kMostValue);
    std::vector<Variables> further;
    for (const Variables& variables : all) {
      for (uint32_t value = range.first; value <= range.last; ++value) {
        further.push_back(variables);
        further.back().set(name, value);
        if (further.size() > kMostRepetitions) {
          values.fail(fmt::format("these are more than {} repetitions", kMostRepetitions));
        }
      }
    }
    all = std::move(further);
  });
  for (const Variables& variables : all) {
    visit(variables);
  }
}

}  // namespace SmbusService::Board
