/// Lists.
#include <Xm/List.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <utility>

#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"

namespace xvt {

namespace {

constexpr int kListRowGap = 2;
constexpr int kListMarginHeight = 4;
constexpr int kListMarginWidth = 6;

/// Changes a list's rows. Scroll bars that come by it would make its frame grow beyond the place that the layout gave
/// it, and those that go would make it shrink.
template <typename Change>
void inItsPlace(ListItem& list, Change change) {
  const RCT place = list.outerRect();
  change();
  const RCT now = list.outerRect();
  if (now.right != place.right || now.bottom != place.bottom) list.place(place);
}

}  // namespace

void appendRows(Widget list, std::span<const std::string> rows) {
  const std::vector<MotifString> strings(rows.begin(), rows.end());
  std::vector<XmString> items(strings.begin(), strings.end());
  XmListAddItemsUnselected(list, items.data(), static_cast<int>(items.size()), 0);
}

ListItem::ListItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : RowsItem(dialog, line, parent) {
  std::vector<Arg> args(5);
  XtSetArg(args[0], const_cast<char*>(XmNselectionPolicy), several() ? XmEXTENDED_SELECT : XmBROWSE_SELECT);
  XtSetArg(args[1], const_cast<char*>(XmNlistSizePolicy), XmCONSTANT);
  XtSetArg(args[2], const_cast<char*>(XmNscrollBarDisplayPolicy), XmAS_NEEDED);
  XtSetArg(args[3], const_cast<char*>(XmNrenderTable), app().look().table(face()));
  XtSetArg(args[4], const_cast<char*>(XmNvisibleItemCount), std::max(1, line.lines));
  widget_ = XmCreateScrolledList(parent, const_cast<char*>(line.name != nullptr ? line.name : "list"), args.data(),
                                 static_cast<Cardinal>(args.size()));
  XtManageChild(widget_);
  listen();
  ready();
}

void ListItem::listen() {
  const auto selected = [this](XtPointer) {
    dialog_.settle();
    tell(CTL_SELECT);
  };
  onCallback(widget_, several() ? XmNextendedSelectionCallback : XmNbrowseSelectionCallback, selected);
  onCallback(widget_, XmNdefaultActionCallback, [this](XtPointer callData) {
    const auto* call = static_cast<XmListCallbackStruct*>(callData);
    // Return is the default button's; only a double click means the row.
    if (call->event != nullptr && call->event->type == KeyPress) return;
    dialog_.settle();
    tell(CTL_DOUBLE);
  });
  onEvent(widget_, FocusChangeMask, [this](XEvent* event) {
    // The border shows where the keyboard is.
    const bool in = event->type == FocusIn;
    XtVaSetValues(outer(), XmNborderColor, app().look().pixel(in ? color::kFocus : color::kBorder), nullptr);
  });
}

Widget ListItem::outer() const { return XtParent(widget_); }

void ListItem::setEnabled(bool enabled) {
  BaseItem::setEnabled(enabled);
  showGround();
}

void ListItem::setColor(XVT_COLOR color) {
  ground_ = color;
  showGround();
}

void ListItem::showGround() {
  const Look& look = app().look();
  const bool enabled = isEnabled();
  const Pixel ground = enabled && ground_ ? look.pixel(*ground_) : look.pixel(enabled ? color::kPaper : color::kGround);
  XtVaSetValues(widget_, XmNbackground, ground, XmNtopShadowColor, ground, nullptr);
}

void ListItem::clearRows() {
  rows_.clear();
  if (std::exchange(shown_, 0) > 0) inItsPlace(*this, [&] { XmListDeleteAllItems(widget_); });
}

/// At the end it waits: a list that is filled row by row would be measured and painted anew for each of them, and the
/// events that come of it, scanned by Xt again and again, would hold the program up for minutes.
void ListItem::addRow(int index, const std::string& text) {
  const auto place = static_cast<std::size_t>(index);
  rows_.insert(rows_.begin() + index, text);
  if (place >= shown_) return;
  ++shown_;
  const MotifString string(text);
  inItsPlace(*this, [&] { XmListAddItemUnselected(widget_, string, index + 1); });
}

void ListItem::refresh() {
  const auto rows = std::span<const std::string>(rows_).subspan(std::exchange(shown_, rows_.size()));
  if (!rows.empty()) inItsPlace(*this, [&] { appendRows(widget_, rows); });
}

bool ListItem::isRowSelected(int row) const { return XmListPosSelected(widget_, row + 1) != False; }

void ListItem::setRowSelected(int row, bool selected) {
  if (!selected) return XmListDeselectPos(widget_, row + 1);
  refresh();
  if (isRowSelected(row)) return;
  // Under the extended policy Motif would give up the other rows.
  if (several()) XtVaSetValues(widget_, XmNselectionPolicy, XmMULTIPLE_SELECT, nullptr);
  XmListSelectPos(widget_, row + 1, False);
  if (several()) XtVaSetValues(widget_, XmNselectionPolicy, XmEXTENDED_SELECT, nullptr);
  int top = 0;
  int visible = 0;
  XtVaGetValues(widget_, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, nullptr);
  if (row + 1 < top) XmListSetPos(widget_, row + 1);
  if (row + 1 >= top + visible) XmListSetBottomPos(widget_, row + 1);
}

void ListItem::clearRowSelection() { XmListDeselectAllItems(widget_); }

void ListItem::grow(COORD pixels) {
  grown_ += pixels;
  dialog_.wantLayout();
}

Cell ListItem::cell() const {
  const Look& look = app().look();
  const int row = look.lineHeight(face()) + look.px(kListRowGap);
  const int frame = 2 * (look.px(kListMarginHeight) + look.line());
  const int width = look.columns(face(), std::max(1, line().columns)) + 2 * look.px(kListMarginWidth) +
                    look.px(kScrollBarWidth) + 2 * look.line();
  const int height = std::max(row + frame, std::max(1, line().lines) * row + frame + grown_);
  Cell cell = leaf({width, height}, look.line() + look.px(kListMarginHeight) + look.ascent(face()));
  cell.wide = growth(Growth::willing);
  if ((line().flags & IF_GROW) != 0) {
    cell.tall = Growth::eager;
    cell.least.height = std::min(height, 3 * row + frame);
  }
  return cell;
}

bool ListItem::choose(int row, bool add) {
  refresh();
  if (row < rowCount()) XmListSetKbdItemPos(widget_, row + 1);
  return BaseItem::choose(row, add);
}

}  // namespace xvt
