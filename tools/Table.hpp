// SPDX-License-Identifier: Apache-2.0
//
// Text in aligned columns, with colours where they are wanted.
#pragma once

#include <string>
#include <vector>

namespace Nimbo {

enum class Colour { kNone, kBold, kGreen, kYellow, kRed };

// The text between the colour's escape sequences.
std::string coloured(const std::string& text, Colour colour);

class Table {
 public:
  enum class Align { kLeft, kRight };

  void addColumn(std::string heading, Align align = Align::kLeft);

  // Begins a row; cells follow from the left. Cells that are not given stay empty.
  void addRow();
  void addCell(std::string text, Colour colour = Colour::kNone);

  // Lines that end in '\n', two blanks between columns and none at a line's end. Widths count
  // characters (UTF-8 code points).
  std::string text(bool colours) const;

 private:
  struct Cell {
    std::string text;
    Colour colour = Colour::kNone;
  };
  struct Column {
    Cell heading;
    Align align;
  };

  size_t width(size_t column) const;
  std::string line(const std::vector<Cell>& cells, bool colours) const;

  std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace Nimbo
