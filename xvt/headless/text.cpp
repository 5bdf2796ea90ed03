#include "xvt/headless/text.h"

#include <algorithm>
#include <climits>

#include "xvt/base/utf8.h"
#include "xvt/headless/window.h"

namespace xvt {

int MemoryFont::width(std::string_view text) const {
  const auto wide = utf8Characters(text) * static_cast<std::size_t>(std::max(1, points_ * 4 / 5));
  return static_cast<int>(std::min<std::size_t>(wide, INT_MAX));
}

MemoryText::MemoryText(MemoryDocument& document, const WIN_DEF& definition)
    : document_(document), font_(Registry::instance().find<Font>(definition.font)), place_(definition.rct) {
  constexpr int kUsualPoints = 10;
  if (!font_) font_ = std::make_shared<MemoryFont>(kUsualPoints);
}

std::shared_ptr<Window> MemoryText::window() const { return document_.shared_from_this(); }

void MemoryText::insert(long where, const char* line) {
  if (where < 0 || where > count()) where = count();
  store_.insert(static_cast<std::size_t>(where), line);
  widest_ = std::max(widest_, font_->width(line));
}

void MemoryText::clear() {
  store_.clear();
  selected_ = {};
  line_ = 0;
  offset_ = widest_ = 0;
}

void MemoryText::scroll(long lines, int pixels) {
  const long visible = (place_.bottom - place_.top) / lineHeight();
  line_ = std::clamp(line_ + lines, 0L, std::max(0L, count() - visible));
  offset_ = std::clamp(offset_ + pixels, 0, std::max(0, widest_ - (place_.right - place_.left)));
}

void MemoryText::select(long line, std::size_t begin, std::size_t end) {
  const auto number = static_cast<std::size_t>(line);
  selected_ = {{number, begin}, {number, end}};
  const long visible = (place_.bottom - place_.top) / lineHeight();
  if (line < line_ || line >= line_ + std::max(1L, visible)) scroll(line - visible / 2 - line_, 0);
}

void MemoryText::setFont(const std::shared_ptr<Font>& font) {
  font_ = font;
  widest_ = 0;
  for (std::size_t line = 0; line < store_.count(); ++line)
    widest_ = std::max(widest_, font_->width(store_.line(line)));
  scroll(0, 0);
}

void MemoryText::move(const RCT& rectangle) {
  place_ = rectangle;
  scroll(0, 0);
}

}  // namespace xvt
