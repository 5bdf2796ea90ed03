/// Push buttons, check boxes, radio buttons.
#include <Xm/PushB.h>
#include <Xm/ToggleB.h>

#include <algorithm>

#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"

namespace xvt {

namespace {

// Distances of the resources that frame a button's text, at a line height of 16.
constexpr int kButtonWidth = 14;
constexpr int kButtonHeight = 5;
constexpr int kHeadMargin = 6;
constexpr int kHeadHeight = 3;
constexpr int kMarkMargin = 3;
constexpr int kMarkSpacing = 7;

/// Runs a Motif action as a user's click would; Motif refuses it for insensitive widgets.
bool armAndActivate(Widget widget) {
  if (XtIsSensitive(widget) == False) return false;
  Frame frame;
  XEvent event{};
  event.xbutton.type = ButtonRelease;
  event.xbutton.display = XtDisplay(widget);
  event.xbutton.window = XtWindow(widget);
  event.xbutton.time = XtLastTimestampProcessed(XtDisplay(widget));
  XtCallActionProc(widget, "ArmAndActivate", &event, nullptr, 0);
  return true;
}

}  // namespace

ButtonItem::ButtonItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : Item(dialog, line, parent) {
  const LabelText label(line.label);
  text_ = label.plain;
  mnemonic_ = label.mnemonic;
  const MotifString string(text_);
  widget_ = XtVaCreateManagedWidget(line.name != nullptr ? line.name : "button", xmPushButtonWidgetClass, parent,
                                    XmNlabelString, static_cast<XmString>(string), XmNrecomputeSize, False,
                                    XmNmarginWidth, 0, XmNdefaultButtonShadowThickness, 0, nullptr);
  if (mnemonic_ != 0) XtVaSetValues(widget_, XmNmnemonic, mnemonic_, nullptr);
  if ((line.flags & IF_DEFAULT) != 0) dressPrimary();
  if (line.kind == IK_HEAD) dressHead();
  onCallback(widget_, XmNactivateCallback, [this](XtPointer call) {
    // Pressed by a key it would look pressed as long as the dialog is up, or the job runs, that it begins.
    XtCallActionProc(widget_, "Disarm", static_cast<XmPushButtonCallbackStruct*>(call)->event, nullptr, 0);
    pressed();
  });
  ready();
}

void ButtonItem::dressPrimary() {
  const Look& look = app().look();
  // A primary button that cannot be used is a pale one: white on blue would still say "press me".
  const bool on = isEnabled();
  const Pixel ground = look.pixel(on ? color::kPrimary : color::kStrip);
  XtVaSetValues(widget_, XmNbackground, ground, XmNforeground, look.pixel(on ? color::kOnPrimary : color::kFaint),
                XmNtopShadowColor, ground, XmNarmColor, look.pixel(color::kPrimaryDown), XmNborderColor,
                look.pixel(on ? color::kPrimary : color::kBorder), nullptr);
}

/// Of a piece with the list below.
void ButtonItem::dressHead() {
  const Look& look = app().look();
  const Pixel ground = look.pixel(color::kStrip);
  const bool right = (line().flags & IF_RIGHT) != 0;
  XtVaSetValues(widget_, XmNbackground, ground, XmNtopShadowColor, ground, XmNforeground, look.pixel(color::kSection),
                XmNalignment, right ? XmALIGNMENT_END : XmALIGNMENT_BEGINNING, XmNmarginWidth, look.px(kHeadMargin),
                nullptr);
}

void ButtonItem::setTitle(const std::string& title) {
  if (title == text_) return;
  text_ = title;
  const MotifString string(text_);
  XtVaSetValues(widget_, XmNlabelString, static_cast<XmString>(string), nullptr);
  const RCT place = outerRect();
  if (cell().natural.width > place.right - place.left) dialog_.wantLayout();
}

void ButtonItem::setEnabled(bool enabled) {
  BaseItem::setEnabled(enabled);
  if ((line().flags & IF_DEFAULT) != 0) dressPrimary();
}

Cell ButtonItem::cell() const {
  const Look& look = app().look();
  const Extent text = look.textSize(Face::plain, text_);
  const int frame = 2 * look.line();  // border and highlight
  if (line().kind == IK_HEAD) {
    const int width = std::max(text.width, look.columns(Face::plain, line().columns));
    const int margin = look.px(kHeadHeight) + frame;
    return leaf({width + 2 * look.px(kHeadMargin), text.height + 2 * margin}, margin + look.ascent());
  }
  const Extent size{text.width + 2 * (look.px(kButtonWidth) + frame),
                    text.height + 2 * (look.px(kButtonHeight) + frame)};
  return leaf(size, look.px(kButtonHeight) + frame + look.ascent());
}

bool ButtonItem::activate() { return isVisible() && armAndActivate(widget_); }

// ---- marks --------------------------------------------------------------------------------------------------------

MarkItem::MarkItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : Item(dialog, line, parent) {
  const LabelText label(line.label);
  text_ = label.plain;
  mnemonic_ = label.mnemonic;
  const Mark mark = line.kind == IK_RADIO ? Mark::radio : Mark::check;
  Marks& marks = app().marks();
  const Look& look = app().look();
  const MotifString string(text_);
  widget_ = XtVaCreateManagedWidget(
      line.name != nullptr ? line.name : "mark", xmToggleButtonWidgetClass, parent, XmNlabelString,
      static_cast<XmString>(string), XmNlabelType, XmPIXMAP_AND_STRING, XmNpixmapTextPadding, look.px(kMarkSpacing),
      XmNlabelPixmap, marks.picture(mark, false, true, ground()), XmNselectPixmap,
      marks.picture(mark, true, true, ground()), XmNlabelInsensitivePixmap, marks.picture(mark, false, false, ground()),
      XmNselectInsensitivePixmap, marks.picture(mark, true, false, ground()), XmNindicatorOn, XmINDICATOR_NONE,
      XmNfillOnSelect, False, XmNrecomputeSize, False, XmNbackground, ground(), XmNtopShadowColor, ground(), nullptr);
  if (mnemonic_ != 0) XtVaSetValues(widget_, XmNmnemonic, mnemonic_, nullptr);
  onCallback(widget_, XmNvalueChangedCallback, [this](XtPointer) {
    // The mark is the handler's to set.
    XmToggleButtonSetState(widget_, checked_ ? True : False, False);
    pressed();
  });
  ready();
}

void MarkItem::setTitle(const std::string& title) {
  if (title == text_) return;
  text_ = title;
  const MotifString string(text_);
  XtVaSetValues(widget_, XmNlabelString, static_cast<XmString>(string), nullptr);
  dialog_.wantLayout();
}

void MarkItem::setChecked(bool checked) {
  checked_ = checked;
  XmToggleButtonSetState(widget_, checked ? True : False, False);
}

Cell MarkItem::cell() const {
  const Look& look = app().look();
  const int frame = look.line() + look.px(kMarkMargin);
  const Extent text = look.textSize(Face::plain, text_);
  const int mark = app().marks().size();
  const int beside = text_.empty() ? 0 : look.px(kMarkSpacing) + text.width;
  const int line = std::max(mark, text.height);
  Cell cell = leaf({mark + beside + 2 * frame, line + 2 * frame}, frame + (line - text.height) / 2 + look.ascent());
  cell.fills = false;
  return cell;
}

bool MarkItem::activate() { return isVisible() && armAndActivate(widget_); }

}  // namespace xvt
