// SPDX-License-Identifier: Apache-2.0
#include "tools/Table.hpp"

#include <gtest/gtest.h>

namespace {

using Nimbo::Colour;
using Nimbo::Table;

TEST(Table, ColumnsAreAlignedByTheirWidestCell) {
  Table table;
  table.addColumn("NAME");
  table.addColumn("SPEED", Table::Align::kRight);
  table.addColumn("STATUS");
  table.addRow();
  table.addCell("fan1");
  table.addCell("8190 rpm");
  table.addCell("ok");
  table.addRow();
  table.addCell("a-long-name");
  table.addCell("-");
  table.addCell("stalled");
  EXPECT_EQ(table.text(false),
            "NAME            SPEED  STATUS\n"
            "fan1         8190 rpm  ok\n"
            "a-long-name         -  stalled\n");
}

TEST(Table, WidthsCountCharactersNotBytes) {
  Table table;
  table.addColumn("T");
  table.addColumn("X");
  table.addRow();
  table.addCell("40 °C");
  table.addCell("1");
  table.addRow();
  table.addCell("12345");
  table.addCell("2");
  EXPECT_EQ(table.text(false), "T      X\n40 °C  1\n12345  2\n");
}

TEST(Table, RowsMayBeShortAndNoLineEndsInBlanks) {
  Table table;
  table.addColumn("A");
  table.addColumn("B");
  table.addRow();
  table.addCell("x");
  table.addRow();
  table.addCell("");
  table.addCell("y");
  EXPECT_EQ(table.text(false), "A  B\nx\n   y\n");
}

TEST(Table, ColoursDoNotMoveTheColumns) {
  Table table;
  table.addColumn("A");
  table.addColumn("B");
  table.addRow();
  table.addCell("x", Colour::kRed);
  table.addCell("y");
  EXPECT_EQ(table.text(true), "\033[1mA\033[0m  \033[1mB\033[0m\n\033[31mx\033[0m  y\n");
}

}  // namespace
