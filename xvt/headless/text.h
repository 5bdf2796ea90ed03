/// Fonts of fixed sizes, and the text fields that count in them.
#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

#include "xvt/desk/textstore.h"
#include "xvt/runtime.h"

namespace xvt {

/// Every character is as wide as every other.
class MemoryFont : public Font {
 public:
  explicit MemoryFont(int points) : points_(points) {}
  int leading() const override { return 0; }
  int ascent() const override { return (points_ * 5 + 2) / 4; }
  int descent() const override { return (points_ + 2) / 3; }
  int width(std::string_view text) const override;
  int lineHeight() const { return ascent() + descent(); }

 private:
  int points_;
};

class MemoryDocument;

class MemoryText final : public TextField {
 public:
  MemoryText(MemoryDocument& document, const WIN_DEF& definition);
  std::shared_ptr<Window> window() const override;
  /// Nobody scrolls here but the program, which is not told of what it did itself.
  void setScrollCallback(TX_SCROLL_CALLBACK) override {}
  void insert(long where, const char* line) override;
  void clear() override;
  long count() const override { return static_cast<long>(store_.count()); }
  std::string_view paragraph(long number) const override { return store_.line(static_cast<std::size_t>(number)); }
  void scroll(long lines, int pixels) override;
  long originLine() const override { return line_; }
  int originOffset() const override { return offset_; }
  void select(long line, std::size_t begin, std::size_t end) override;
  void selectAll() { selected_ = {{}, endOf(store_)}; }
  long selection(std::size_t* begin, std::size_t* end) const override {
    return partOfFirstLine(store_, selected_, begin, end);
  }
  void setFont(const std::shared_ptr<Font>& font) override;
  int widest() const override { return widest_; }
  void move(const RCT& rectangle) override;
  RCT viewRect() const override { return place_; }
  std::string selectedText() const { return textOf(store_, selected_); }

 private:
  int lineHeight() const { return std::max(1, font_->leading() + font_->ascent() + font_->descent()); }

  MemoryDocument& document_;
  std::shared_ptr<Font> font_;
  TextStore store_;
  TextRange selected_;
  RCT place_;
  long line_ = 0;
  int offset_ = 0;
  int widest_ = 0;
};

}  // namespace xvt
