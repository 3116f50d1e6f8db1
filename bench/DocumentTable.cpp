// SPDX-License-Identifier: Apache-2.0
#include "bench/DocumentTable.hpp"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace Bench {

namespace {

std::string contentsOf(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    throw std::runtime_error(path + " cannot be read");
  }
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

DocumentTable::DocumentTable(std::string path, const std::string& name)
    : path_(std::move(path)), document_(contentsOf(path_)) {
  const std::string opening = fmt::format("<!-- {} -->\n", name);
  const std::string closing = fmt::format("<!-- /{} -->\n", name);
  begin_ = document_.find(opening);
  end_ = document_.find(closing, begin_);
  if (begin_ == std::string::npos || end_ == std::string::npos) {
    throw std::runtime_error(fmt::format("{} has no place for the table: a line {}and a line {}",
                                         path_, opening, closing));
  }
  begin_ += opening.size();
}

void DocumentTable::replaceWith(const std::string& table) {
  document_.replace(begin_, end_ - begin_, table);
  end_ = begin_ + table.size();
  const std::string fresh = path_ + ".new";
  std::ofstream out(fresh);
  out << document_ << std::flush;
  if (!out) {
    throw std::runtime_error(fresh + " cannot be written");
  }
  std::filesystem::rename(fresh, path_);
}

}  // namespace Bench
