// SPDX-License-Identifier: Apache-2.0
#include "tools/Panel.hpp"

#include <algorithm>
#include <span>
#include <vector>

#include <fmt/format.h>

#include "tools/Table.hpp"

namespace Nimbo {

namespace {

constexpr size_t kBlock = 16;   // ports that stand together
constexpr size_t kCell = 3;     // characters a port
constexpr size_t kMargin = 2;   // before the frame
constexpr size_t kWidest = 80;  // of a line

struct Sign {
  const char* condition;
  const char* unicode;
  const char* ascii;
};

constexpr Sign kSigns[] = {
    {"ok", "●", "O"},        {"empty", "·", "."},     {"no light", "○", "o"},
    {"fault", "✖", "X"},     {"disabled", "⊘", "-"},  {"in reset", "↻", "R"},
    {"interrupt", "!", "!"}, {"low power", "◐", "l"},
};
constexpr Sign kFailed = {"failed", "?", "?"};

struct Frame {
  const char* side;
  const char* dash;
  const char* top[3];  // left, between blocks, right
  const char* bottom[3];
};

constexpr Frame kUnicodeFrame = {"│", "─", {"┌", "┬", "┐"}, {"└", "┴", "┘"}};
constexpr Frame kAsciiFrame = {"|", "-", {"+", "+", "+"}, {"+", "+", "+"}};

const Sign& signOf(const Observation& port) {
  const std::string word = port.verdict().word;
  const auto* found = std::ranges::find(kSigns, word, &Sign::condition);
  return found == std::end(kSigns) ? kFailed : *found;
}

const Value& typeOf(const Observation& port) {
  static const Value kNone;
  return port.readings.empty() ? kNone : port.readings.front().value;
}

// The number that the port's name ends with, or the last letters of a name without one.
std::string labelOf(const Observation& port) {
  const std::string& name = port.device->entry.name;
  const size_t letters = name.find_last_not_of("0123456789") + 1;
  const std::string label = letters < name.size() ? name.substr(letters) : name;
  return label.size() < kCell ? label : label.substr(label.size() - (kCell - 1));
}

using Ports = std::span<const Observation>;

class Picture {
 public:
  explicit Picture(const Style& style)
      : style_(style), frame_(style.unicode ? kUnicodeFrame : kAsciiFrame) {}

  // Blocks that stand side by side.
  void addBand(const std::vector<Ports>& blocks) {
    text_ += text_.empty() ? "" : "\n";
    addLabels(blocks, 0);
    addEdge(blocks, frame_.top);
    addSigns(blocks, 0);
    addSigns(blocks, 1);
    addEdge(blocks, frame_.bottom);
    addLabels(blocks, 1);
  }

  void addLegend(Ports ports) {
    std::string legend;
    const auto addIfSeen = [&](const Sign& sign) {
      if (std::ranges::any_of(ports, [&](const auto& port) { return &signOf(port) == &sign; })) {
        legend += fmt::format("  {} {}", glyph(sign), sign.condition);
      }
    };
    std::ranges::for_each(kSigns, addIfSeen);
    addIfSeen(kFailed);
    text_ += legend + "\n";
  }

  const std::string& text() const { return text_; }

 private:
  const char* glyph(const Sign& sign) const { return style_.unicode ? sign.unicode : sign.ascii; }

  static size_t columns(Ports block) { return (block.size() + 1) / 2; }

  // Row 0 holds the first, third ... port of a block, row 1 the others.
  template <typename Cell>
  std::string row(const std::vector<Ports>& blocks, size_t number, const char* between,
                  const Cell& cell) const {
    std::string line(kMargin, ' ');
    for (const Ports block : blocks) {
      line += between;
      for (size_t port = number; port < 2 * columns(block); port += 2) {
        line += port < block.size() ? cell(block[port]) : std::string(kCell, ' ');
      }
    }
    return line + between;
  }

  void addLine(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    text_ += line + "\n";
  }

  void addLabels(const std::vector<Ports>& blocks, size_t number) {
    addLine(row(blocks, number, " ", [](const Observation& port) {
      return fmt::format("{:>{}}", labelOf(port), kCell);
    }));
  }

  void addSigns(const std::vector<Ports>& blocks, size_t number) {
    addLine(row(blocks, number, frame_.side, [this](const Observation& port) {
      const Colour colour = style_.colours ? colourOf(port) : Colour::kNone;
      return std::string(kCell - 1, ' ') + coloured(glyph(signOf(port)), colour);
    }));
  }

  static Colour colourOf(const Observation& port) {
    const bool there = port.outcome.status != PL_STATUS_EMPTY;
    return there ? healthColour(port.verdict().health) : Colour::kNone;
  }

  void addEdge(const std::vector<Ports>& blocks, const char* const (&corners)[3]) {
    std::string line(kMargin, ' ');
    for (size_t i = 0; i < blocks.size(); ++i) {
      line += corners[i == 0 ? 0 : 1];
      for (size_t dash = 0; dash < columns(blocks[i]) * kCell; ++dash) {
        line += frame_.dash;
      }
    }
    addLine(line + corners[2]);
  }

  const Style& style_;
  const Frame& frame_;
  std::string text_;
};

// Ports of one type that follow each other, so many at most.
std::vector<Ports> blocksOf(Ports ports) {
  std::vector<Ports> blocks;
  while (!ports.empty()) {
    const auto end = std::ranges::find_if(
        ports, [&](const auto& port) { return typeOf(port) != typeOf(ports.front()); });
    const size_t size = std::min(static_cast<size_t>(end - ports.begin()), kBlock);
    blocks.push_back(ports.first(size));
    ports = ports.subspan(size);
  }
  return blocks;
}

size_t widthOf(Ports block) { return (block.size() + 1) / 2 * kCell + 1; }

}  // namespace

std::string panelPicture(const Group& xcvrs, const Style& style) {
  Picture picture(style);
  std::vector<Ports> band;
  size_t width = kMargin + 1;
  for (const Ports block : blocksOf(xcvrs.observations)) {
    if (!band.empty() && width + widthOf(block) > kWidest) {
      picture.addBand(band);
      band.clear();
      width = kMargin + 1;
    }
    band.push_back(block);
    width += widthOf(block);
  }
  picture.addBand(band);
  picture.addLegend(xcvrs.observations);
  return picture.text();
}

}  // namespace Nimbo
