// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/control/BoardNames.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "smbus/service/board/BoardError.hpp"

namespace SmbusService {
namespace {

using Board::BoardError;
using Board::unknownName;
using Board::VirtualBoard;

std::vector<std::string> wiresOf(const VirtualBoard& board) {
  std::vector<std::string> names;
  for (const Board::NetInfo& net : board.nets()) {
    names.push_back(net.name);
  }
  return names;
}

std::vector<std::string> quantitiesOf(const VirtualBoard& board, const std::string& label) {
  std::vector<std::string> names;
  for (const auto& quantity : board.quantities(label)) {
    names.push_back(quantity.name);
  }
  return names;
}

void require(std::string_view what, const std::string& name, const std::vector<std::string>& known,
             std::string_view where = {}) {
  if (std::ranges::find(known, name) == known.end()) {
    throw BoardError(unknownName(what, name, known, where));
  }
}

// Where a chip's label ends in "chip.quantity", or npos.
size_t endOfLabel(const VirtualBoard& board, const std::string& name) {
  for (size_t end = name.find_first_of(".:"); end != std::string::npos;
       end = name.find_first_of(".:", end + 1)) {
    if (board.chip(name.substr(0, end)) != nullptr) {
      return end;
    }
  }
  return std::string::npos;
}

}  // namespace

void requireChip(const VirtualBoard& board, const std::string& label) {
  require("chip", label, board.labels());
}

void requireBus(const VirtualBoard& board, const std::string& name) {
  require("bus", name, board.busNames());
}

void requireWire(const VirtualBoard& board, const std::string& name) {
  require("wire", name, wiresOf(board));
}

void requireEvent(const VirtualBoard& board, const std::string& name) {
  require("event", name, board.eventNames());
}

std::string leverNamed(const VirtualBoard& board, const std::string& name) {
  if (board.get(name)) {
    return name;
  }
  if (board.chip(name) != nullptr) {
    throw BoardError(
        fmt::format("say which register or quantity of \"{}\"; it has the quantities {}", name,
                    fmt::join(quantitiesOf(board, name), ", ")));
  }
  const size_t end = endOfLabel(board, name);
  if (end != std::string::npos) {
    const std::string label = name.substr(0, end);
    const std::string quantity = name.substr(end + 1);
    require("quantity", quantity, quantitiesOf(board, label), fmt::format(" of \"{}\"", label));
    return label + ":" + quantity;
  }
  const size_t dot = name.find_first_of(".:");
  if (dot != std::string::npos) {
    requireChip(board, name.substr(0, dot));
  }
  requireWire(board, name);
  return name;
}

}  // namespace SmbusService
