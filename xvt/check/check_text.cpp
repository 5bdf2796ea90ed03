/// Checked calls: fonts, scroll bars, text fields.
#include <algorithm>
#include <cstring>

#include "xvt/check/check.h"

using namespace xvt;

namespace {

std::shared_ptr<Font> needFont(XVT_FNTID font, const char* function) {
  return need<Font>(font, function, "not a font");
}

std::shared_ptr<TextField> needField(TXEDIT text, const char* function) {
  return need<TextField>(text, function, "not a text field");
}

std::shared_ptr<Window> needBar(WINDOW window, SCROLL_TYPE bar, const char* function) {
  auto owner = needWindow(window, function);
  if (!owner || owner->hasScrollBar(bar)) return owner;
  report(function, "the window has no such scroll bar");
  return nullptr;
}

void store(int* where, int value) {
  if (where != nullptr) *where = value;
}

}  // namespace

XVT_FNTID xvt_font_create(const char* family, int size, FONT_STYLE style) {
  if (!hasText(family, __func__)) return NULL_FNTID;
  if (size < 1 || size > 500) {
    report(__func__, "no size of 1 to 500 points");
    return NULL_FNTID;
  }
  const auto font = runtime::createFont(std::strcmp(family, "courier") == 0, size, style == FS_BOLD);
  return font ? Registry::instance().enter(font) : NULL_FNTID;
}

void xvt_font_destroy(XVT_FNTID font) {
  if (needFont(font, __func__)) Registry::instance().leave(font);
}

void xvt_font_get_metrics(XVT_FNTID font, int* leading, int* ascent, int* descent) {
  const auto found = needFont(font, __func__);
  store(leading, found ? found->leading() : 0);
  store(ascent, found ? found->ascent() : 0);
  store(descent, found ? found->descent() : 0);
}

COORD xvt_font_get_text_width(XVT_FNTID font, const char* text, int length) {
  const auto found = drawn(needFont(font, __func__));
  if (!found || !hasText(text, __func__)) return 0;
  const std::size_t whole = length < 0 ? std::strlen(text) : strnlen(text, static_cast<std::size_t>(length));
  return found->width(std::string_view(text, whole));
}

void xvt_sbar_set_range(WINDOW window, SCROLL_TYPE bar, COORD low, COORD high) {
  if (const auto owner = drawn(needBar(window, bar, __func__))) owner->setScrollRange(bar, low, std::max(low, high));
}

void xvt_sbar_set_proportion(WINDOW window, SCROLL_TYPE bar, COORD proportion) {
  if (const auto owner = drawn(needBar(window, bar, __func__)))
    owner->setScrollProportion(bar, std::max(0, proportion));
}

void xvt_sbar_set_pos(WINDOW window, SCROLL_TYPE bar, COORD position) {
  if (const auto owner = drawn(needBar(window, bar, __func__))) owner->setScrollPosition(bar, position);
}

TXEDIT xvt_tx_get(WINDOW window, int id) {
  const auto owner = needWindow(window, __func__);
  const auto field = owner ? owner->textField(id) : nullptr;
  return field ? field->handle() : NULL_TXEDIT;
}

WINDOW xvt_tx_get_window(TXEDIT text) {
  const auto field = needField(text, __func__);
  const auto owner = field ? field->window() : nullptr;
  return owner ? owner->handle() : NULL_WIN;
}

void xvt_tx_set_scroll_callback(TXEDIT text, TX_SCROLL_CALLBACK callback) {
  if (const auto field = needField(text, __func__)) field->setScrollCallback(callback);
}

bool xvt_tx_add_par(TXEDIT text, T_PNUM where, const char* line) {
  const auto field = drawn(needField(text, __func__));
  if (!field || !hasText(line, __func__)) return false;
  field->insert(where, line);
  return true;
}

void xvt_tx_clear(TXEDIT text) {
  if (const auto field = drawn(needField(text, __func__))) field->clear();
}

T_LNUM xvt_tx_get_num_pars(TXEDIT text) {
  const auto field = needField(text, __func__);
  return field ? field->count() : 0;
}

const char* xvt_tx_get_par(TXEDIT text, T_LNUM number, std::size_t* length) {
  const auto field = needField(text, __func__);
  const bool there = field && number >= 0 && number < field->count();
  if (field && !there) report(__func__, "no paragraph " + std::to_string(number));
  const std::string_view line = there ? field->paragraph(number) : std::string_view("");
  if (length != nullptr) *length = line.size();
  return line.data();
}

void xvt_tx_scroll_vert(TXEDIT text, T_LNUM lines) {
  if (const auto field = drawn(needField(text, __func__))) field->scroll(lines, 0);
}

void xvt_tx_scroll_hor(TXEDIT text, COORD pixels) {
  if (const auto field = drawn(needField(text, __func__))) field->scroll(0, pixels);
}

T_LNUM xvt_tx_get_origin(TXEDIT text, T_CPOS* offset) {
  const auto field = needField(text, __func__);
  store(offset, field ? field->originOffset() : 0);
  return field ? field->originLine() : 0;
}

void xvt_tx_select(TXEDIT text, T_LNUM line, std::size_t begin, std::size_t end) {
  const auto field = drawn(needField(text, __func__));
  if (!field) return;
  if (line < 0 || line >= field->count()) return report(__func__, "no paragraph " + std::to_string(line));
  const std::size_t length = field->paragraph(line).size();
  begin = std::min(begin, length);
  field->select(line, begin, std::clamp(end, begin, length));
}

T_LNUM xvt_tx_get_selection(TXEDIT text, std::size_t* begin, std::size_t* end) {
  *begin = *end = 0;
  const auto field = needField(text, __func__);
  return field ? field->selection(begin, end) : 0;
}

void xvt_tx_set_font(TXEDIT text, XVT_FNTID font) {
  const auto field = drawn(needField(text, __func__));
  const auto found = needFont(font, __func__);
  if (field && found) field->setFont(found);
}

COORD xvt_tx_get_text_width(TXEDIT text) {
  const auto field = needField(text, __func__);
  return field ? field->widest() : 0;
}

void xvt_tx_move(TXEDIT text, const RCT* rectangle) {
  const auto field = drawn(needField(text, __func__));
  if (field && hasText(rectangle, __func__)) field->move(*rectangle);
}

void xvt_tx_get_view_rect(TXEDIT text, RCT* rectangle) {
  const auto field = needField(text, __func__);
  if (hasText(rectangle, __func__)) *rectangle = field ? field->viewRect() : RCT{};
}

void xvt_tx_process_event(WINDOW window, EVENT* event) {
  // Called at the end of every handler, also when the handler has just destroyed its window: no report then.
  const auto owner = drawn(Registry::instance().find<Window>(window));
  if (owner && event != nullptr) owner->paintText();
}
