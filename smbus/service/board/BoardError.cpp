// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/BoardError.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <numeric>

namespace SmbusService::Board {
namespace {

constexpr size_t kMostListed = 24;
constexpr size_t kLongestCompared = 64;

bool same(char a, char b) {
  return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// How many characters must be put in, left out or replaced to make one of the other.
size_t distance(std::string_view from, std::string_view to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (const char letter : from) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < to.size(); ++j) {
      const size_t replaced = diagonal + (same(letter, to[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// Those that are near enough to be meant, by a slip of the finger: the nearest.
std::vector<std::string> similar(std::string_view name, const std::vector<std::string>& known) {
  std::vector<std::string> nearest;
  if (name.size() > kLongestCompared) {
    return nearest;
  }
  size_t least = SIZE_MAX;
  for (const std::string& other : known) {
    const size_t away = distance(name, other);
    if (away > (std::min(name.size(), other.size()) + 2) / 3 || away > least) {
      continue;
    }
    if (away < least) {
      nearest.clear();
    }
    least = away;
    nearest.push_back(other);
  }
  return nearest;
}

std::string quoted(std::vector<std::string> names, std::string_view between) {
  const bool all = names.size() <= kMostListed;
  if (!all) {
    names.resize(kMostListed);
  }
  return fmt::format("\"{}\"{}", fmt::join(names, fmt::format("\"{}\"", between)),
                     all ? "" : " and more");
}

}  // namespace

std::string unknownName(std::string_view what, std::string_view name,
                        const std::vector<std::string>& known, std::string_view where) {
  const std::vector<std::string> meant = similar(name, known);
  const std::string none = fmt::format("there is no {} \"{}\"{}", what, name, where);
  if (!meant.empty()) {
    return fmt::format("{}; did you mean {}?", none, quoted(meant, " or "));
  }
  if (known.empty()) {
    return fmt::format("{}; the board has none", none);
  }
  return fmt::format("{}; there are {}", none, quoted(known, ", "));
}

}  // namespace SmbusService::Board
