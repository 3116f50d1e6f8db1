// SPDX-License-Identifier: Apache-2.0
//
// The drivers' pages for those who write board descriptions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "test/support/DriverNames.hpp"

namespace {

std::string page(const std::string& name) {
  std::ifstream file(NIMBO_DRIVER_PAGES + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(DriverPages, EveryDriverIsInTheIndexAndOnItsPage) {
  const std::string index = page("README.md");
  for (const std::string name : Doubles::kDriverNames) {
    const std::regex row("\\| `" + name + "` \\|[^|]+\\| \\[\\w+\\]\\((\\w+\\.md)\\) \\|\n");
    std::smatch found;
    ASSERT_TRUE(std::regex_search(index, found, row)) << name;
    EXPECT_THAT(page(found[1]), testing::HasSubstr("`" + name + "`")) << found[1];
  }
}

}  // namespace
