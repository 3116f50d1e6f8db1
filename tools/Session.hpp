// SPDX-License-Identifier: Apache-2.0
//
// A board in the hands of the library: what every command begins with.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/Board.hpp"
#include "tools/Device.hpp"
#include "tools/Library.hpp"
#include "tools/Options.hpp"
#include "tools/Report.hpp"

namespace Nimbo {

// The command line asks for something that this board has not. what() is for the operator.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Session {
 public:
  // Reads the board description, sets the library's environment, loads the library and its
  // plug-ins and starts it with the topology. Throws Config::FileError or LibraryError. One session
  // a process: the library is started once.
  explicit Session(const Options& options);

  const Board& board() const { return board_; }
  const Library& library() const { return library_; }

  // The entry of that name in one of the board's lists; throws UsageError with the names there are.
  Entry entry(const std::string& kind, const std::string& name) const;

  // Adds all devices of these kinds. A refusal is said on standard error with the entry's place,
  // and is in the device.
  std::vector<Device> add(std::span<const Kind* const> kinds) const;

  // Adds the one device of that name; throws Config::FileError at the entry on a refusal.
  Device add(const Kind& kind, const std::string& name) const;
  Device add(const Kind& kind, const Entry& entry) const;

  // Looks at all devices.
  Report report(std::span<const Kind* const> kinds, std::span<const Device> devices) const;

  // Says on standard error how many warnings of the library were not printed.
  void mentionWarnings() const;

 private:
  const Options& options_;
  Board board_;
  Library library_;
};

}  // namespace Nimbo
