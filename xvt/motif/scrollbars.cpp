#include "xvt/motif/scrollbars.h"

#include <Xm/ScrollBar.h>

#include <algorithm>
#include <array>
#include <climits>

#include "xvt/motif/guard.h"
#include "xvt/motif/shell_window.h"

namespace xvt {

namespace {

struct Use {
  const char* callback;
  SCROLL_CONTROL what;
};

const std::array<Use, 8> kUses{{{XmNdecrementCallback, SC_LINE_UP},
                                {XmNincrementCallback, SC_LINE_DOWN},
                                {XmNpageDecrementCallback, SC_PAGE_UP},
                                {XmNpageIncrementCallback, SC_PAGE_DOWN},
                                {XmNtoTopCallback, SC_THUMB},
                                {XmNtoBottomCallback, SC_THUMB},
                                {XmNdragCallback, SC_THUMBTRACK},
                                {XmNvalueChangedCallback, SC_THUMB}}};

}  // namespace

ScrollBar::ScrollBar(ShellWindow& window, Widget parent, SCROLL_TYPE type) : window_(window), type_(type) {
  widget_ = XtVaCreateManagedWidget(type == HSCROLL ? "hbar" : "vbar", xmScrollBarWidgetClass, parent, XmNorientation,
                                    type == HSCROLL ? XmHORIZONTAL : XmVERTICAL, XmNtraversalOn, False, nullptr);
  for (const Use& use : kUses)
    onCallback(widget_, use.callback,
               [this, use](XtPointer data) { used(use.what, static_cast<XmScrollBarCallbackStruct*>(data)->value); });
}

void ScrollBar::used(SCROLL_CONTROL what, int value) {
  dragging_ = what == SC_THUMBTRACK;
  // Motif has moved the thumb already; where it ends is the program's to say.
  stale_ = true;
  EVENT event;
  event.type = type_ == HSCROLL ? E_HSCROLL : E_VSCROLL;
  event.scroll.what = what;
  event.scroll.position = value;
  window_.tell(event);
}

void ScrollBar::setRange(COORD low, COORD high) {
  stale_ = stale_ || low != low_ || high != high_;
  low_ = low;
  high_ = high;
}

void ScrollBar::setProportion(COORD proportion) {
  stale_ = stale_ || proportion != proportion_;
  proportion_ = proportion;
}

void ScrollBar::setPosition(COORD position) {
  stale_ = stale_ || position != position_;
  position_ = position;
}

void ScrollBar::refresh() {
  if (!stale_ || dragging_) return;  // a thumb in the user's hand stays there
  stale_ = false;
  const COORD high = std::max(high_, low_ < INT_MAX ? low_ + 1 : low_);
  const long extent = static_cast<long>(high) - low_;
  const int slider = static_cast<int>(std::clamp<long>(proportion_, 1, extent));
  const int value = static_cast<int>(std::clamp<long>(position_, low_, high - slider));
  // A bar with nothing to scroll is a quiet one.
  const Pixel thumb = app().look().pixel(slider == extent ? color::kTrough : color::kThumb);
  XtVaSetValues(widget_, XmNminimum, low_, XmNmaximum, high, XmNsliderSize, slider, XmNvalue, value, XmNincrement, 1,
                XmNpageIncrement, slider, XmNforeground, thumb, nullptr);
}

}  // namespace xvt
