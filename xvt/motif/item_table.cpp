#include "xvt/motif/item_table.h"

#include <Xm/BulletinB.h>
#include <Xm/DrawingA.h>
#include <Xm/ScrollBar.h>

#include <algorithm>

#include "xvt/motif/dialog.h"
#include "xvt/motif/geometry.h"
#include "xvt/motif/guard.h"

namespace xvt {

namespace {

constexpr int kTableRowGap = 4;
constexpr int kMargin = 4;      // above the first row
constexpr int kCellMargin = 8;  // as wide as that of a head with its frame
constexpr int kWheelRows = 3;

}  // namespace

TableItem::TableItem(Dialog& dialog, const DLG_ITEM& line, Widget parent)
    : RowsItem(dialog, line, parent), last_{-1, 0} {
  for (const auto& item : dialog.items())
    if (item->kind() == IK_HEAD) heads_.push_back(static_cast<const Item*>(item.get()));
  const Look& look = app().look();
  const Pixel paper = look.pixel(color::kPaper);
  frame_ = XtVaCreateManagedWidget("table", xmBulletinBoardWidgetClass, parent, XmNborderWidth, look.line(),
                                   XmNborderColor, look.pixel(color::kBorder), XmNbackground, paper, XmNresizePolicy,
                                   XmRESIZE_NONE, nullptr);
  widget_ = XtVaCreateManagedWidget(line.name != nullptr ? line.name : "rows", xmDrawingAreaWidgetClass, frame_,
                                    XmNbackground, paper, XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy,
                                    XmRESIZE_NONE, nullptr);
  bar_ = XtVaCreateManagedWidget("bar", xmScrollBarWidgetClass, frame_, XmNorientation, XmVERTICAL, nullptr);
  listen();
  ready();
}

TableItem::~TableItem() {
  if (appIfRunning() == nullptr || draw_ == nullptr) return;
  XftDrawDestroy(draw_);
  XFreePixmap(app().display(), pixmap_);
}

void TableItem::listen() {
  onCallback(
      widget_, XmNexposeCallback,
      [this](XtPointer call) {
        const XEvent* event = static_cast<XmDrawingAreaCallbackStruct*>(call)->event;
        if (event == nullptr || event->xexpose.count == 0) paint();
      });
  onEvent(widget_, ButtonPressMask | ButtonReleaseMask, [this](XEvent* event) {
    const XButtonEvent& button = event->xbutton;
    if (button.button == Button4 || button.button == Button5) {
      if (event->type == ButtonPress) scrollTo(top_ + (button.button == Button4 ? -kWheelRows : kWheelRows));
    } else if (button.button == Button1) {
      event->type == ButtonPress ? pressedAt(button) : released();
    }
  });
  onEvent(widget_, FocusChangeMask, [this](XEvent* event) {
    // The border shows where the keyboard is.
    const bool in = event->type == FocusIn;
    XtVaSetValues(frame_, XmNborderColor, app().look().pixel(in ? color::kFocus : color::kBorder), nullptr);
  });
  for (const char* moved : {XmNvalueChangedCallback, XmNdragCallback})
    onCallback(bar_, moved, [this](XtPointer call) { scrollTo(static_cast<XmScrollBarCallbackStruct*>(call)->value); });
}

void TableItem::setEnabled(bool enabled) {
  BaseItem::setEnabled(enabled);
  stale_ = true;
}

// ---- the mouse ----------------------------------------------------------------------------------------------------

void TableItem::pressedAt(const XButtonEvent& event) {
  takeFocus();
  const int y = event.y - app().look().px(kMargin);
  const int row = y < 0 ? -1 : top_ + y / rowHeight();
  pressed_ = row < rowCount() ? row : -1;
  if (pressed_ < 0) return;
  const Time pause = event.time - last_.second;
  twice_ = last_.first == pressed_ && pause <= static_cast<Time>(XtGetMultiClickTime(XtDisplay(widget_)));
  last_ = {twice_ ? -1 : pressed_, event.time};
  setRowSelected(pressed_, true);
}

/// The handler is told when the button is up again, so that a box that it opens does not take the click.
void TableItem::released() {
  if (pressed_ < 0) return;
  dialog_.settle();
  // The handler may have answered that with other rows.
  const int row = std::exchange(pressed_, -1);
  if (row < 0 || row != selected_ || dialog_.isDying()) return;
  tell(CTL_SELECT);
  if (std::exchange(twice_, false) && !dialog_.isDying()) tell(CTL_DOUBLE);
}

// ---- rows ---------------------------------------------------------------------------------------------------------

void TableItem::clearRows() {
  rows_.clear();
  selected_ = pressed_ = last_.first = -1;
  top_ = 0;
  stale_ = true;
}

void TableItem::addRow(int index, const std::string& text) {
  rows_.insert(rows_.begin() + index, text);
  if (selected_ >= index) ++selected_;
  stale_ = true;
}

void TableItem::setRowSelected(int row, bool selected) {
  if (!selected && row != selected_) return;
  selected_ = selected ? row : -1;
  if (selected && row < top_) top_ = row;
  if (selected && row >= top_ + rowsShown()) top_ = row - rowsShown() + 1;
  stale_ = true;
}

void TableItem::clearRowSelection() {
  selected_ = -1;
  stale_ = true;
}

void TableItem::scrollTo(int row) {
  top_ = std::clamp(row, 0, mostTop());
  stale_ = true;
}

// ---- place --------------------------------------------------------------------------------------------------------

int TableItem::rowHeight() const { return app().look().lineHeight(face()) + app().look().px(kTableRowGap); }

int TableItem::rowsShown() const {
  const RCT room = placeOf(widget_);
  return std::max(1, (room.bottom - room.top - app().look().px(kMargin)) / rowHeight());
}

Cell TableItem::cell() const {
  const Look& look = app().look();
  const int frame = 2 * look.px(kMargin) + 2 * look.line();
  const int width = look.columns(face(), std::max(1, line().columns)) + look.px(kScrollBarWidth) + 2 * look.line();
  const int height = std::max(1, line().lines) * rowHeight() + frame;
  Cell cell = leaf({width, height}, look.line() + look.px(kMargin) + look.ascent(face()));
  cell.wide = growth(Growth::willing);
  cell.tall = growth(Growth::none);
  cell.least.height = std::min(height, 3 * rowHeight() + frame);
  return cell;
}

void TableItem::place(const RCT& room) {
  Item::place(room);
  const int border = app().look().line();
  const int width = std::max(2, room.right - room.left - 2 * border);
  const int height = std::max(1, room.bottom - room.top - 2 * border);
  const int rows = std::max(1, width - app().look().px(kScrollBarWidth));
  setPlace(widget_, RCT{0, 0, height, rows});
  setPlace(bar_, RCT{0, rows, height, width});
  // Rows that came before the place did were brought into view in a list of another size.
  if (selected_ >= 0) setRowSelected(selected_, true);
  stale_ = true;
}

// ---- painting -----------------------------------------------------------------------------------------------------

void TableItem::refresh() {
  if (stale_) paint();
}

/// Asked for once each: over a slow line the answers would take longer than a list takes to be painted.
const XftColor& TableItem::ink(color::Tone tone) {
  const auto [at, isNew] = inks_.try_emplace(tone);
  if (!isNew) return at->second;
  XColor exact{};
  exact.pixel = app().look().pixel(tone);
  XQueryColor(app().display(), DefaultColormapOfScreen(XtScreen(widget_)), &exact);
  return at->second = {exact.pixel, {exact.red, exact.green, exact.blue, 0xFFFF}};
}

void TableItem::fitPixmap() {
  Display* display = XtDisplay(widget_);
  const RCT room = placeOf(widget_);
  const Extent size{room.right - room.left, room.bottom - room.top};
  if (draw_ != nullptr && size.width == drawn_.width && size.height == drawn_.height) return;
  drawn_ = size;
  // Nothing of the window is cleared before it is painted anew.
  XSetWindowBackgroundPixmap(display, XtWindow(widget_), None);
  const Pixmap before = pixmap_;
  pixmap_ =
      XCreatePixmap(display, XtWindow(widget_), static_cast<unsigned>(size.width), static_cast<unsigned>(size.height),
                    static_cast<unsigned>(DefaultDepthOfScreen(XtScreen(widget_))));
  if (draw_ != nullptr)
    XftDrawChange(draw_, pixmap_);
  else
    draw_ = XftDrawCreate(display, pixmap_, DefaultVisualOfScreen(XtScreen(widget_)),
                          DefaultColormapOfScreen(XtScreen(widget_)));
  if (before != 0) XFreePixmap(display, before);
}

/// A bar with nothing to scroll is a quiet one.
void TableItem::fitBar() {
  const int all = std::max(1, rowCount());
  const int seen = std::min(rowsShown(), all);
  const Pixel thumb = app().look().pixel(seen == all ? color::kTrough : color::kThumb);
  XtVaSetValues(bar_, XmNminimum, 0, XmNmaximum, all, XmNsliderSize, seen, XmNvalue, top_, XmNincrement, 1,
                XmNpageIncrement, seen, XmNforeground, thumb, nullptr);
}

void TableItem::paint() {
  if (!XtIsRealized(widget_)) return;
  stale_ = false;
  fitPixmap();
  top_ = std::clamp(top_, 0, mostTop());
  fitBar();
  XftDrawRect(draw_, &ink(color::kPaper), 0, 0, static_cast<unsigned>(drawn_.width),
              static_cast<unsigned>(drawn_.height));
  int y = app().look().px(kMargin);
  for (int row = top_; row < rowCount() && y < drawn_.height; ++row, y += rowHeight()) paintRow(row, y);
  GC gc = XtGetGC(widget_, 0, nullptr);
  XCopyArea(XtDisplay(widget_), pixmap_, XtWindow(widget_), gc, 0, 0, static_cast<unsigned>(drawn_.width),
            static_cast<unsigned>(drawn_.height), 0, 0);
  XtReleaseGC(widget_, gc);
}

void TableItem::paintRow(int row, int y) {
  if (row == selected_) {
    XftDrawRect(draw_, &ink(color::kChosen), 0, y, static_cast<unsigned>(drawn_.width),
                static_cast<unsigned>(rowHeight()));
  }
  std::string_view rest = rows_[static_cast<std::size_t>(row)];
  for (const Item* head : heads_) {
    const std::size_t end = std::min(rest.find('\t'), rest.size());
    const bool quiet = head != heads_.front() && row != selected_;
    paintCell(*head, rest.substr(0, end), y, quiet ? color::kQuiet : color::kInk);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

void TableItem::paintCell(const Item& head, std::string_view text, int y, color::Tone tone) {
  if (text.empty()) return;
  const Look& look = app().look();
  const RCT column = head.outerRect();
  const int origin = outerRect().left + look.line();
  const int left = column.left - origin + look.px(kCellMargin);
  const int right = std::min(column.right - origin, drawn_.width) - look.px(kCellMargin);
  const std::string shown = look.fitted(face(), std::string(text), std::max(1, right - left));
  const bool toRight = (head.line().flags & IF_RIGHT) != 0;
  const int x = toRight ? std::max(left, right - look.textWidth(face(), shown)) : left;
  XftDrawStringUtf8(draw_, &ink(isEnabled() ? tone : color::kFaint), look.font(face()), x,
                    y + look.px(kTableRowGap) / 2 + look.ascent(face()), reinterpret_cast<const FcChar8*>(shown.data()),
                    static_cast<int>(shown.size()));
}

}  // namespace xvt
