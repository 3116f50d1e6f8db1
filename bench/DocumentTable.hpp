// SPDX-License-Identifier: Apache-2.0
//
// A table in a document that a program writes, between two comments that name it:
//
//   <!-- callback-costs -->
//   | Kind | ...
//   <!-- /callback-costs -->
#pragma once

#include <string>

namespace Bench {

class DocumentTable {
 public:
  // Throws std::runtime_error when the document cannot be read or has not both comments.
  DocumentTable(std::string path, const std::string& name);

  [[nodiscard]] std::string text() const { return document_.substr(begin_, end_ - begin_); }

  // All of the new document or, with a std::runtime_error, the old one is there afterwards.
  void replaceWith(const std::string& table);

 private:
  std::string path_;
  std::string document_;
  size_t begin_;
  size_t end_;
};

}  // namespace Bench
