// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/BoardError.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
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
  for (size_t i = 0; i < from.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < to.size(); ++j) {
      const size_t replaced = diagonal + (same(from[i], to[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// Near enough to be a slip of the finger.
bool near(std::string_view name, std::string_view known) {
  if (name.size() > kLongestCompared) return false;
  return distance(name, known) <= (std::min(name.size(), known.size()) + 1) / 3;
}

std::string quoted(std::vector<std::string> names, std::string_view between) {
  const bool all = names.size() <= kMostListed;
  if (!all) names.resize(kMostListed);
  return fmt::format("\"{}\"{}", fmt::join(names, fmt::format("\"{}\"", between)),
                     all ? "" : " and more");
}

}  // namespace

std::string unknownName(std::string_view what, std::string_view name,
                        const std::vector<std::string>& known) {
  std::vector<std::string> similar;
  std::ranges::copy_if(known, std::back_inserter(similar),
                       [name](const std::string& other) { return near(name, other); });
  const std::string none = fmt::format("there is no {} \"{}\"", what, name);
  if (!similar.empty()) return fmt::format("{}; did you mean {}?", none, quoted(similar, " or "));
  if (known.empty()) return fmt::format("{}; the board has none", none);
  return fmt::format("{}; there are {}", none, quoted(known, ", "));
}

}  // namespace SmbusService::Board
