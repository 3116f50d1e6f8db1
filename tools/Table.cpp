// SPDX-License-Identifier: Apache-2.0
#include "tools/Table.hpp"

#include <algorithm>
#include <utility>

namespace Nimbo {

namespace {

constexpr const char* kReset = "\033[0m";
constexpr const char* kGap = "  ";

const char* sequence(Colour colour) {
  static constexpr const char* kSequences[] = {"", "\033[1m", "\033[32m", "\033[33m", "\033[31m"};
  return kSequences[static_cast<size_t>(colour)];
}

size_t characters(const std::string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

}  // namespace

std::string coloured(const std::string& text, Colour colour) {
  return colour == Colour::kNone ? text : sequence(colour) + text + kReset;
}

void Table::addColumn(std::string heading, Align align) {
  columns_.push_back({{std::move(heading), Colour::kBold}, align});
}

void Table::addRow() { rows_.emplace_back(); }

void Table::addCell(std::string text, Colour colour) {
  rows_.back().push_back({std::move(text), colour});
}

size_t Table::width(size_t column) const {
  size_t width = characters(columns_[column].heading.text);
  for (const auto& row : rows_) {
    width = std::max(width, column < row.size() ? characters(row[column].text) : 0);
  }
  return width;
}

std::string Table::line(const std::vector<Cell>& cells, bool colours) const {
  std::string line;
  std::string pending;  // blanks that are written only before further text
  for (size_t i = 0; i < cells.size(); ++i) {
    const std::string fill(width(i) - characters(cells[i].text), ' ');
    const bool right = columns_[i].align == Align::kRight;
    if (!cells[i].text.empty()) {
      line += pending + (right ? fill : "") +
              coloured(cells[i].text, colours ? cells[i].colour : Colour::kNone);
      pending.clear();
    }
    pending += cells[i].text.empty() || !right ? fill : "";
    pending += kGap;
  }
  return line + "\n";
}

std::string Table::text(bool colours) const {
  std::vector<Cell> headings;
  for (const Column& column : columns_) {
    headings.push_back(column.heading);
  }
  std::string text = line(headings, colours);
  for (const auto& row : rows_) {
    text += line(row, colours);
  }
  return text;
}

}  // namespace Nimbo
