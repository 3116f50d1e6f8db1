// SPDX-License-Identifier: Apache-2.0
//
// What a board was asked for and cannot do. what() is for whoever asked, and says what there is
// instead.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace SmbusService::Board {

class BoardError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "there is no chip "PSoc"; did you mean "PSoC"?", or, where no name is near, with the names that
// there are. `where` stands behind the name, " for ..." for instance.
[[nodiscard]] std::string unknownName(std::string_view what, std::string_view name,
                                      const std::vector<std::string>& known,
                                      std::string_view where = {});

}  // namespace SmbusService::Board
