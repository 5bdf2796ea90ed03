/// The user's hands on a text view: mouse, wheel, keys, and the selection that they make.
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdlib>

#include "xvt/motif/textview/textview_impl.h"

namespace xvt {

namespace {

constexpr long kWheelLines = 3;
constexpr unsigned long kAutoscrollInterval = 50;
/// A second click counts as double only this near to the first, in pixels.
constexpr int kClickDistance = 4;

/// The keypad's keys mean what the same keys beside it mean.
KeySym plainKey(KeySym symbol) {
  switch (symbol) {
    case XK_KP_Up:
      return XK_Up;
    case XK_KP_Down:
      return XK_Down;
    case XK_KP_Left:
      return XK_Left;
    case XK_KP_Right:
      return XK_Right;
    case XK_KP_Page_Up:
      return XK_Page_Up;
    case XK_KP_Page_Down:
      return XK_Page_Down;
    case XK_KP_Home:
      return XK_Home;
    case XK_KP_End:
      return XK_End;
    case XK_KP_Insert:
      return XK_Insert;
    default:
      return symbol;
  }
}

}  // namespace

void TextViewImpl::handle(XEvent* event) {
  switch (event->type) {
    case KeyPress:
      key(event->xkey);
      break;
    case ButtonPress:
      press(event->xbutton);
      break;
    case MotionNotify:
      if (dragging_) drag(event->xmotion.x, event->xmotion.y);
      break;
    case ButtonRelease:
      release(event->xbutton);
      break;
    default:
      break;
  }
}

void TextViewImpl::focusChanged(bool focused) {
  if (focused == focused_) return;
  focused_ = focused;
  changed();
}

// ---- scrolling --------------------------------------------------------------------------------------------------

void TextViewImpl::userScroll(long line, long pixels) {
  if (moveOrigin(line, pixels) && scrolled) scrolled(originLine, lineCount(), static_cast<int>(offset));
}

void TextViewImpl::wheel(const XButtonEvent& event) {
  const bool sideways = event.button > Button5 || (event.state & ShiftMask) != 0;
  const bool forward = event.button == Button5 || event.button == 7;
  const long lines = (event.state & ControlMask) != 0 ? std::max(1L, viewLines()) : kWheelLines;
  const long step = forward ? lines : -lines;
  if (sideways)
    userScroll(originLine, offset + step * lineHeight_);
  else
    userScroll(originLine + step, offset);
}

bool TextViewImpl::scrollKey(KeySym symbol, unsigned state) {
  const bool whole = (state & ControlMask) != 0;
  const long page = std::max(1L, viewLines() - 1);
  const long step = 2L * metrics_.advance(U'-');
  switch (symbol) {
    case XK_Up:
      return userScroll(originLine - 1, offset), true;
    case XK_Down:
      return userScroll(originLine + 1, offset), true;
    case XK_Left:
      return userScroll(originLine, offset - step), true;
    case XK_Right:
      return userScroll(originLine, offset + step), true;
    case XK_Page_Up:
      return userScroll(originLine - page, offset), true;
    case XK_Page_Down:
      return userScroll(originLine + page, offset), true;
    case XK_Home:
      return userScroll(whole ? 0 : originLine, 0), true;
    case XK_End:
      return userScroll(whole ? lineCount() : originLine, whole ? offset : widest), true;
    default:
      return false;
  }
}

/// The origin that brings a place into view with as little scrolling as it takes.
std::pair<long, long> TextViewImpl::originFor(TextPosition place) const {
  const auto line = static_cast<long>(place.line);
  const long top = std::min(line, std::max(originLine, line - std::max(1L, viewLines()) + 1));
  const long x = metrics_.xOf(store.line(place.line), place.byte);
  const long left = std::min(x, std::max(offset, x - std::max(0, viewWidth() - metrics_.advance(U' '))));
  return {top, left};
}

void TextViewImpl::show(TextPosition place) {
  const auto [top, left] = originFor(place);
  userScroll(top, left);
}

// ---- selection --------------------------------------------------------------------------------------------------

TextRange TextViewImpl::selection() const {
  const TextRange to = unitAt(store, point_, unit_);
  return {std::min(anchor_.begin, to.begin), std::max(anchor_.end, to.end)};
}

void TextViewImpl::startAt(TextPosition place, TextUnit unit) {
  unit_ = unit;
  point_ = place;
  anchor_ = unitAt(store, place, unit);
  changed();
}

void TextViewImpl::extendTo(TextPosition place, TextUnit unit) {
  unit_ = unit;
  point_ = place;
  changed();
}

/// What was out of view comes into its middle.
void TextViewImpl::select(TextRange range) {
  startAt(range.begin, TextUnit::character);
  extendTo(range.end, TextUnit::character);
  if (originFor(range.begin).first != originLine)
    moveOrigin(static_cast<long>(range.begin.line) - viewLines() / 2, offset);
  for (const TextPosition place : {range.end, range.begin}) moveOrigin(originLine, originFor(place).second);
  offerPrimary(lastTime());
}

void TextViewImpl::selectAll() {
  startAt({}, TextUnit::character);
  extendTo(endOf(store), TextUnit::character);
  offerPrimary(lastTime());
}

void TextViewImpl::clearSelection() {
  startAt({}, TextUnit::character);
  offerPrimary(lastTime());
}

void TextViewImpl::lineInserted(std::size_t index) {
  if (index + 1 == store.count()) return;
  for (TextPosition* place : {&anchor_.begin, &anchor_.end, &point_})
    if (place->line >= index) ++place->line;
}

/// The place under a pixel of the widget, outside of the text the nearest one.
TextPosition TextViewImpl::placeAt(int x, int y) const {
  const int below = y - marginY();
  const long line = originLine + (below < 0 ? -1 : below / lineHeight_);
  if (line < 0 || store.count() == 0) return {};
  if (line >= lineCount()) return endOf(store);
  const auto number = static_cast<std::size_t>(line);
  return {number, metrics_.byteAt(store.line(number), offset + x - marginX())};
}

/// The place above (below for a negative number) where the selection ends now.
TextPosition TextViewImpl::placeUp(long lines) const {
  const long line = static_cast<long>(point_.line) - lines;
  if (line < 0) return {};
  if (line >= lineCount()) return endOf(store);
  const auto number = static_cast<std::size_t>(line);
  return {number, metrics_.byteAt(store.line(number), metrics_.xOf(store.line(point_.line), point_.byte))};
}

// ---- mouse ------------------------------------------------------------------------------------------------------

int TextViewImpl::clicks(const XButtonEvent& event) {
  const bool again = event.button == lastPress_.button &&
                     event.time - lastPress_.time <= static_cast<Time>(XtGetMultiClickTime(display_)) &&
                     std::abs(event.x - lastPress_.x) <= kClickDistance &&
                     std::abs(event.y - lastPress_.y) <= kClickDistance;
  clicks_ = again ? clicks_ % 3 + 1 : 1;
  lastPress_ = event;
  return clicks_;
}

/// The menu is about the place under the pointer, unless that is selected already. It comes when the button is let go,
/// which would take it away again.
void TextViewImpl::pressForMenu(const XButtonEvent& event) {
  XmProcessTraversal(widget, XmTRAVERSE_CURRENT);
  const TextPosition place = placeAt(event.x, event.y);
  const TextRange selected = selection();
  if (place < selected.begin || place >= selected.end) {
    startAt(place, TextUnit::character);
    paintNow();
  }
}

void TextViewImpl::press(const XButtonEvent& event) {
  if (event.button > Button3) return wheel(event);
  if (event.button == Button3) return pressForMenu(event);
  if (event.button != Button1) return;
  XmProcessTraversal(widget, XmTRAVERSE_CURRENT);
  const int count = clicks(event);
  const TextPosition place = placeAt(event.x, event.y);
  if ((event.state & ShiftMask) != 0)
    extendTo(place, unit_);
  else
    startAt(place, count == 1 ? TextUnit::character : count == 2 ? TextUnit::word : TextUnit::line);
  dragging_ = true;
}

void TextViewImpl::drag(int x, int y) {
  dragX_ = x;
  dragY_ = y;
  extendTo(placeAt(x, y), unit_);
  if (x < 0 || x >= width_ || y < 0 || y >= height_)
    dragTimer_.start(widget, kAutoscrollInterval);
  else
    dragTimer_.stop();
}

/// While the pointer is held outside, scrolls on, the faster the further out it is.
void TextViewImpl::autoscroll() {
  const auto outside = [](int at, int size) { return at < 0 ? at : std::max(0, at - size + 1); };
  const int y = outside(dragY_, height_);
  const int x = outside(dragX_, width_);
  const auto steps = [this](int pixels) { return pixels == 0 ? 0 : pixels / lineHeight_ + (pixels > 0 ? 1 : -1); };
  userScroll(originLine + steps(y), offset + long{steps(x)} * metrics_.advance(U' '));
  if (dragging_) drag(dragX_, dragY_);
}

void TextViewImpl::release(XButtonEvent& event) {
  if (event.button == Button3 && menu) return menu(event);
  if (event.button != Button1 || !dragging_) return;
  dragging_ = false;
  dragTimer_.stop();
  offerPrimary(event.time);
}

// ---- keys -------------------------------------------------------------------------------------------------------

/// Where Shift and a key take the end of the selection.
TextPosition TextViewImpl::placeFor(KeySym symbol, unsigned state) const {
  const bool far = (state & ControlMask) != 0;
  const TextUnit unit = far ? TextUnit::word : TextUnit::character;
  const long page = std::max(1L, viewLines() - 1);
  switch (symbol) {
    case XK_Up:
      return placeUp(1);
    case XK_Down:
      return placeUp(-1);
    case XK_Page_Up:
      return placeUp(page);
    case XK_Page_Down:
      return placeUp(-page);
    case XK_Left:
      return placeBefore(store, point_, unit);
    case XK_Right:
      return placeBehind(store, point_, unit);
    case XK_Home:
      return far ? TextPosition{} : TextPosition{point_.line, 0};
    default:
      return far ? endOf(store) : TextPosition{point_.line, store.line(point_.line).size()};
  }
}

bool TextViewImpl::selectKey(KeySym symbol, unsigned state) {
  static constexpr KeySym kMovers[] = {XK_Up, XK_Down, XK_Page_Up, XK_Page_Down, XK_Left, XK_Right, XK_Home, XK_End};
  if (std::find(std::begin(kMovers), std::end(kMovers), symbol) == std::end(kMovers)) return false;
  if (selection().empty() && (static_cast<long>(point_.line) < originLine ||
                              static_cast<long>(point_.line) >= originLine + std::max(1L, viewLines())))
    startAt({static_cast<std::size_t>(originLine), 0}, TextUnit::character);
  extendTo(placeFor(symbol, state), TextUnit::character);
  show(point_);
  return true;
}

void TextViewImpl::key(XKeyEvent& event) {
  char text[8];
  KeySym symbol = NoSymbol;
  XLookupString(&event, text, sizeof text, &symbol, nullptr);
  symbol = plainKey(symbol);
  const bool shift = (event.state & ShiftMask) != 0;
  const bool control = (event.state & ControlMask) != 0;
  if (symbol == XK_Tab || symbol == XK_ISO_Left_Tab)
    XmProcessTraversal(widget, shift ? XmTRAVERSE_PREV_TAB_GROUP : XmTRAVERSE_NEXT_TAB_GROUP);
  else if (control && (symbol == XK_a || symbol == XK_A))
    selectAll();
  else if (control && (symbol == XK_c || symbol == XK_C || symbol == XK_Insert))
    copyToClipboard(event.time);
  else if (shift && selectKey(symbol, event.state))
    offerPrimary(event.time);
  else
    scrollKey(symbol, event.state);
}

}  // namespace xvt
