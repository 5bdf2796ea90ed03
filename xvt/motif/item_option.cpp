/// Option lists: a button that shows the choice and a list that pops up below it.
#include <X11/Shell.h>
#include <X11/keysym.h>
#include <Xm/DrawnB.h>
#include <Xm/GrabShell.h>
#include <Xm/List.h>

#include <algorithm>

#include "xvt/motif/dialog.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"

namespace xvt {

namespace {

constexpr int kOptionMarginWidth = 7;
constexpr int kOptionMarginHeight = 5;
constexpr int kArrowRoom = 22;
constexpr int kRowsAtOnce = 14;

}  // namespace

OptionItem::OptionItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : RowsItem(dialog, line, parent) {
  const Look& look = app().look();
  const MotifString empty("");
  widget_ =
      XtVaCreateManagedWidget(line.name != nullptr ? line.name : "option", xmDrawnButtonWidgetClass, parent,
                              XmNlabelString, static_cast<XmString>(empty), XmNlabelType, XmSTRING, XmNrecomputeSize,
                              False, XmNpushButtonEnabled, True, XmNmarginRight, look.px(kArrowRoom), nullptr);
  onCallback(
      widget_, XmNexposeCallback, [this](XtPointer) { drawArrow(); });
  onCallback(widget_, XmNactivateCallback, [this](XtPointer) { openList(); });
  onEvent(widget_, KeyPressMask, [this](XEvent* event) {
    const KeySym key = XLookupKeysym(&event->xkey, 0);
    if (key == XK_Down) step(1);
    if (key == XK_Up) step(-1);
  });
  ready();
}

OptionItem::~OptionItem() { forgetList(); }

std::string OptionItem::title() const { return selected_ < 0 ? std::string() : rowText(selected_); }

void OptionItem::drawArrow() {
  if (!XtIsRealized(widget_)) return;
  const Look& look = app().look();
  Marks& marks = app().marks();
  const Pixel ground = look.pixel(isEnabled() ? color::kPaper : color::kGround);
  const RCT place = outerRect();
  const int size = marks.size();
  const int x = place.right - place.left - 2 * look.line() - size - look.px(5);
  const int y = (place.bottom - place.top - 2 * look.line() - size) / 2;
  GC gc = XtGetGC(widget_, 0, nullptr);
  XCopyArea(XtDisplay(widget_), marks.picture(Mark::arrow, false, isEnabled(), ground), XtWindow(widget_), gc, 0, 0,
            static_cast<unsigned>(size), static_cast<unsigned>(size), x, y);
  XtReleaseGC(widget_, gc);
}

void OptionItem::show() {
  const Look& look = app().look();
  const RCT place = outerRect();
  const int room = place.right - place.left - 2 * (2 * look.line() + look.px(kOptionMarginWidth)) - look.px(kArrowRoom);
  const std::string text = selected_ < 0 ? std::string() : rowText(selected_);
  const MotifString string(look.fitted(Face::plain, text, std::max(1, room)));
  XtVaSetValues(widget_, XmNlabelString, static_cast<XmString>(string), nullptr);
  drawArrow();
}

void OptionItem::setEnabled(bool enabled) {
  if (!enabled) closeList();
  BaseItem::setEnabled(enabled);
  const Pixel ground = app().look().pixel(enabled ? color::kPaper : color::kGround);
  XtVaSetValues(widget_, XmNbackground, ground, XmNtopShadowColor, ground, nullptr);
  drawArrow();
}

void OptionItem::setVisible(bool visible) {
  if (!visible) closeList();
  Item::setVisible(visible);
}

void OptionItem::clearRows() {
  closeList();
  rows_.clear();
  selected_ = -1;
  show();
  fillList();
}

void OptionItem::addRow(int index, const std::string& text) {
  rows_.insert(rows_.begin() + index, text);
  if (selected_ >= index) ++selected_;
  fillList();
  dialog_.wantLayout();
}

void OptionItem::setRowSelected(int row, bool selected) {
  if (!selected && row != selected_) return;
  selected_ = selected ? row : -1;
  show();
}

void OptionItem::clearRowSelection() {
  selected_ = -1;
  show();
}

Cell OptionItem::cell() const {
  const Look& look = app().look();
  int text = look.columns(Face::plain, std::max(1, line().columns));
  for (const std::string& row : rows_) text = std::max(text, look.textWidth(Face::plain, row));
  text = std::min(text, look.columns(Face::plain, 60));
  const int frame = 2 * look.line();  // border and highlight
  const Extent size{text + 2 * (frame + look.px(kOptionMarginWidth)) + look.px(kArrowRoom),
                    look.lineHeight() + 2 * (frame + look.px(kOptionMarginHeight))};
  return leaf(size, frame + look.px(kOptionMarginHeight) + look.ascent());
}

void OptionItem::place(const RCT& room) {
  Item::place(room);
  show();
}

bool OptionItem::activate() {
  if (!isVisible() || XtIsSensitive(widget_) == False) return false;
  openList();
  return true;
}

// ---- the list -----------------------------------------------------------------------------------------------------

void OptionItem::fillList() {
  if (list_ == nullptr) return;
  XmListDeleteAllItems(list_);
  appendRows(list_, rows_);
}

void OptionItem::createList() {
  std::vector<Arg> shellArgs(5);
  XtSetArg(shellArgs[0], const_cast<char*>(XmNownerEvents), True);
  XtSetArg(shellArgs[1], const_cast<char*>(XmNgrabStyle), GrabModeAsync);
  XtSetArg(shellArgs[2], const_cast<char*>(XmNallowShellResize), False);
  XtSetArg(shellArgs[3], const_cast<char*>(XmNborderWidth), app().look().line());
  XtSetArg(shellArgs[4], const_cast<char*>(XmNshadowThickness), 0);
  popup_ = XmCreateGrabShell(dialog_.shell(), const_cast<char*>("choices"), shellArgs.data(), 5);
  std::vector<Arg> args(4);
  XtSetArg(args[0], const_cast<char*>(XmNselectionPolicy), XmBROWSE_SELECT);
  XtSetArg(args[1], const_cast<char*>(XmNrenderTable), app().look().table(Face::plain));
  XtSetArg(args[2], const_cast<char*>(XmNlistSizePolicy), XmCONSTANT);
  XtSetArg(args[3], const_cast<char*>(XmNvisibleItemCount), std::min(rowCount(), kRowsAtOnce));
  list_ = XmCreateScrolledList(popup_, const_cast<char*>("choiceList"), args.data(), 4);
  XtVaSetValues(XtParent(list_), XmNborderWidth, 0, nullptr);
  XtManageChild(list_);
  const auto chosen = [this](XtPointer callData) {
    const auto* call = static_cast<XmListCallbackStruct*>(callData);
    const bool moving = call->reason == XmCR_BROWSE_SELECT && call->event != nullptr &&
                        (call->event->type == KeyPress || call->event->type == ButtonPress);
    if (moving) return;
    const int row = call->item_position - 1;
    closeList();
    if (row >= 0 && row < rowCount()) choose(row, false);
  };
  onCallback(list_, XmNbrowseSelectionCallback, chosen);
  onCallback(list_, XmNdefaultActionCallback, chosen);
  onCallback(popup_, XmNpopdownCallback, [this](XtPointer) {
    forgetList();
    // Without a window manager nobody else gives the keyboard back.
    if (appIfRunning() != nullptr && !app().hasWindowManager()) dialog_.takeFocus();
  });
  fillList();
}

void OptionItem::openList() {
  if (app().choosing() != nullptr) return;
  dialog_.settle();
  // The handler may have answered that with anything.
  if (rows_.empty() || dialog_.isDying() || app().blockerOf(dialog_) || XtIsSensitive(widget_) == False) return;
  if (popup_ == nullptr) createList();
  // Realized first, or the list would set the size of its shell.
  XtRealizeWidget(popup_);
  const RCT place = placeOf(widget_);
  Position x = 0;
  Position y = 0;
  XtTranslateCoords(parent_, static_cast<Position>(place.left), static_cast<Position>(place.bottom), &x, &y);
  const Look& look = app().look();
  const int rows = std::min(rowCount(), kRowsAtOnce);
  const int height = rows * (look.lineHeight() + look.px(2)) + 2 * (look.px(4) + look.line());
  const int below = HeightOfScreen(XtScreen(widget_)) - y;
  if (height > below) y = static_cast<Position>(y - height - (place.bottom - place.top));
  XtVaSetValues(list_, XmNvisibleItemCount, rows, nullptr);
  XtVaSetValues(popup_, XmNx, x, XmNy, std::max<Position>(0, y), XmNwidth,
                static_cast<Dimension>(place.right - place.left), XmNheight, static_cast<Dimension>(height), nullptr);
  if (selected_ >= 0) {
    XmListSelectPos(list_, selected_ + 1, False);
    XmListSetKbdItemPos(list_, selected_ + 1);
  }
  app().setChoosing(this);
  XtPopup(popup_, XtGrabNone);
}

int OptionItem::markedRow() const {
  int* rows = nullptr;
  int count = 0;
  const bool any = XmListGetSelectedPos(list_, &rows, &count) != False && count > 0;
  const int row = any ? rows[0] - 1 : -1;
  XtFree(reinterpret_cast<char*>(rows));
  return row;
}

void OptionItem::markRow(int row) { XmListSelectPos(list_, row + 1, False); }

void OptionItem::closeList() {
  if (app().choosing() != this) return;
  XtPopdown(popup_);
  forgetList();
}

void OptionItem::forgetList() {
  if (appIfRunning() != nullptr && app().choosing() == this) app().setChoosing(nullptr);
}

}  // namespace xvt
