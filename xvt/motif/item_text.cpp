/// Labels, headings, values, hints, status lines; meters and separators, which are not touched either.
#include <Xm/DrawingA.h>
#include <Xm/Label.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/Separator.h>

#include <algorithm>

#include "xvt/base/text.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"
#include "xvt/motif/selection.h"
#include "xvt/motif/tooltip.h"

namespace xvt {

namespace {

Face faceOf(const DLG_ITEM& line) {
  if (line.kind == IK_HEADING) return Face::heading;
  if ((line.flags & IF_MONO) != 0) return Face::mono;
  return (line.flags & IF_BOLD) != 0 ? Face::bold : Face::plain;
}

color::Tone inkOf(const DLG_ITEM& line) {
  if (line.kind == IK_HINT) return color::kQuiet;
  if (line.kind == IK_STATUS || (line.kind == IK_LABEL && (line.flags & IF_BOLD) != 0)) return color::kSection;
  return color::kInk;
}

}  // namespace

TextItem::TextItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : Item(dialog, line, parent) {
  const LabelText label(line.label);
  text_ = label.plain;
  mnemonic_ = line.kind == IK_LABEL ? label.mnemonic : 0;
  const Look& look = app().look();
  const bool status = line.kind == IK_STATUS;
  const MotifString string(text_, mnemonic_);
  widget_ = XtVaCreateManagedWidget(
      line.name != nullptr ? line.name : "label", xmLabelWidgetClass, parent, XmNlabelString,
      static_cast<XmString>(string), XmNrenderTable, look.table(faceOf(line)), XmNrecomputeSize, False, XmNalignment,
      (line.flags & IF_RIGHT) != 0 ? XmALIGNMENT_END : XmALIGNMENT_BEGINNING, XmNbackground,
      status ? look.pixel(color::kStrip) : ground(), XmNforeground, look.pixel(inkOf(line)), XmNtopShadowColor,
      status ? look.pixel(color::kStrip) : ground(), XmNmarginWidth, padding().width, XmNmarginHeight, padding().height,
      nullptr);
  if (mnemonic_ != 0) XtVaSetValues(widget_, XmNmnemonic, mnemonic_, nullptr);
  shown_ = text_;
  ready();
  // What the program writes there, paths above all, can be had whole.
  if (line.kind == IK_VALUE)
    onEvent(widget_, ButtonReleaseMask, [this](XEvent* event) {
      if (event->xbutton.button == Button3 && !text_.empty() && !app().blockerOf(dialog_)) offerCopy(event->xbutton);
    });
}

void TextItem::offerCopy(XButtonEvent& event) {
  if (menu_ == nullptr) {
    menu_ = XmCreatePopupMenu(parent_, const_cast<char*>("valueMenu"), nullptr, 0);
    const MotifString label("Copy");
    Widget copy = XtVaCreateManagedWidget("copy", xmPushButtonWidgetClass, menu_, XmNlabelString,
                                          static_cast<XmString>(label), nullptr);
    onCallback(copy, XmNactivateCallback,
               [this](XtPointer) { putOnClipboard(widget_, text_, XtLastTimestampProcessed(XtDisplay(widget_))); });
  }
  XmMenuPosition(menu_, &event);
  XtManageChild(menu_);
}

Extent TextItem::padding() const {
  const Look& look = app().look();
  return line().kind == IK_STATUS ? Extent{look.spacing().margin, look.px(6)} : Extent{};
}

void TextItem::setTitle(const std::string& title) {
  if (title == text_) return;
  text_ = title;
  const RCT place = outerRect();
  const auto lines = [this] { return std::ranges::count(shown_, '\n'); };
  const auto before = lines();
  show(place.right - place.left);
  if (lines() != before) dialog_.wantLayout();
  // What the program writes into a value may be long or short: it is shown as far as it goes. A label was given its
  // place by its text, and gets another one.
  const Extent size = app().look().textSize(faceOf(line()), text_);
  if (line().kind == IK_VALUE || line().kind == IK_STATUS) return;
  if (size.width > place.right - place.left || size.height > place.bottom - place.top) dialog_.wantLayout();
}

void TextItem::setColor(XVT_COLOR color) { XtVaSetValues(widget_, XmNforeground, app().look().pixel(color), nullptr); }

Cell TextItem::cell() const {
  const Look& look = app().look();
  const Face own = faceOf(line());
  Extent size = look.textSize(own, line().kind == IK_STATUS ? shown_ : text_);
  const int wished = look.columns(own, line().columns);
  if (line().kind == IK_VALUE) size.width = std::clamp(size.width, wished, std::max(wished, look.columns(own, 56)));
  size.width = std::max(size.width, wished) + 2 * padding().width;
  size.height = std::max(size.height, line().lines * look.lineHeight(own)) + 2 * padding().height;
  Cell cell = leaf(size, padding().height + look.ascent(own));
  const bool elastic = line().kind == IK_VALUE || line().kind == IK_HINT || line().kind == IK_STATUS;
  if (elastic) {
    cell.wide = growth(Growth::willing);
    // What the program writes may be cut, names before numbers; a hint of the dialog's table was written to be read.
    const bool name = line().kind == IK_VALUE && (line().flags & IF_GROW) != 0;
    const int table = line().kind == IK_HINT ? look.textSize(own, LabelText(line().label).plain).width : 0;
    cell.least.width = std::max({name ? wished * 2 / 3 : wished, table, std::min(size.width, look.columns(own, 8))});
  }
  return cell;
}

void TextItem::place(const RCT& room) {
  Item::place(room);
  show(room.right - room.left);
}

/// A status line may tell more than goes into one: it takes as many as it needs, and what is too long for that is cut.
std::string TextItem::inLines(int width) const {
  constexpr std::size_t kMost = 5;
  const Look& look = app().look();
  const Face own = faceOf(line());
  std::vector<std::string> lines{text_};
  const auto fits = [&](const std::string& one) { return look.textWidth(own, one) <= width; };
  for (std::size_t columns = text_.size(); columns > 8 && !std::ranges::all_of(lines, fits); columns -= columns / 8)
    lines = wrapped(text_, columns);
  std::string all;
  for (std::size_t at = 0; at < std::min(lines.size(), kMost); ++at)
    all += (at > 0 ? "\n" : "") +
           look.fitted(own, lines[at] + (at + 1 == kMost && lines.size() > kMost ? " …" : ""), width);
  return all;
}

void TextItem::show(int width) {
  const int room = std::max(1, width - 2 * padding().width);
  const bool lines = text_.find('\n') != std::string::npos;
  const std::string fitted = line().kind == IK_STATUS ? inLines(room)
                             : lines                  ? text_
                                                      : app().look().fitted(faceOf(line()), text_, room);
  if (fitted == shown_) return;
  shown_ = fitted;
  const MotifString string(shown_, mnemonic_);
  XtVaSetValues(widget_, XmNlabelString, static_cast<XmString>(string), nullptr);
  // What is cut can still be read.
  const bool whole = std::ranges::equal(
      shown_, text_, [](char one, char other) { return one == other || (one == '\n' && other == ' '); });
  if (line().help == nullptr) setTooltip(widget_, whole ? std::string() : text_);
}

// ---- meters and separators ----------------------------------------------------------------------------------------

MeterItem::MeterItem(Dialog& dialog, const DLG_ITEM& line, Widget parent)
    : Item(dialog, line, parent), bar_(app().look().pixel(color::kPrimary)) {
  widget_ = XtVaCreateManagedWidget(line.name != nullptr ? line.name : "meter", xmDrawingAreaWidgetClass, parent,
                                    XmNbackground, app().look().pixel(color::kMeterTrough), nullptr);
  onCallback(widget_, XmNexposeCallback, [this](XtPointer) { draw(); });
  ready();
}

void MeterItem::draw() {
  if (!XtIsRealized(widget_)) return;
  const RCT place = outerRect();
  const int width = (place.right - place.left) * percent_ / 100;
  Display* display = XtDisplay(widget_);
  XGCValues values{};
  values.foreground = bar_;
  GC gc = XtGetGC(widget_, GCForeground, &values);
  if (width > 0)
    XFillRectangle(display, XtWindow(widget_), gc, 0, 0, static_cast<unsigned>(width),
                   static_cast<unsigned>(place.bottom - place.top));
  XtReleaseGC(widget_, gc);
  XClearArea(display, XtWindow(widget_), width, 0, 0, 0, False);
}

void MeterItem::setColor(XVT_COLOR color) {
  bar_ = app().look().pixel(color);
  draw();
}

void MeterItem::setMeter(int percent) {
  if (percent == percent_) return;
  percent_ = percent;
  draw();
}

Cell MeterItem::cell() const {
  const Look& look = app().look();
  const int height = look.px((line().flags & IF_BOLD) != 0 ? 8 : 1);
  Cell cell = leaf({look.columns(Face::plain, std::max(1, line().columns)), height},
                   height / 2 + look.ascent() / 2 - look.px(1));
  cell.wide = growth(Growth::willing);
  return cell;
}

SeparatorItem::SeparatorItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : Item(dialog, line, parent) {
  widget_ = XtVaCreateManagedWidget("separator", xmSeparatorWidgetClass, parent, XmNbackground, ground(), nullptr);
  ready();
}

Cell SeparatorItem::cell() const {
  const int line = app().look().line();
  Cell cell = leaf({line, line}, -1);
  cell.wide = Growth::willing;
  return cell;
}

}  // namespace xvt
