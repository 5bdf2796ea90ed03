/// Edit fields.
#include <Xm/TextF.h>

#include <algorithm>
#include <utility>

#include "xvt/base/utf8.h"
#include "xvt/motif/dialog.h"
#include "xvt/motif/guard.h"
#include "xvt/motif/item.h"
#include "xvt/motif/paste.h"
#include "xvt/motif/selection.h"

namespace xvt {

namespace {

constexpr int kFieldWidth = 7;
constexpr int kFieldHeight = 5;

}  // namespace

EditItem::EditItem(Dialog& dialog, const DLG_ITEM& line, Widget parent) : Item(dialog, line, parent) {
  const Look& look = app().look();
  const bool readonly = (line.flags & IF_READONLY) != 0;
  widget_ =
      XtVaCreateManagedWidget(line.name != nullptr ? line.name : "edit", xmTextFieldWidgetClass, parent, XmNrenderTable,
                              look.table(face()), XmNcursorPositionVisible, False, XmNeditable, readonly ? False : True,
                              XmNbackground, look.pixel(readonly ? color::kGround : color::kPaper), nullptr);
  onCallback(widget_, XmNvalueChangedCallback, [this](XtPointer) {
    if (quiet_) return;
    begin(true);
    tell(CTL_EDITED);
  });
  onCallback(widget_, XmNfocusCallback, [this](XtPointer) {
    XtVaSetValues(widget_, XmNcursorPositionVisible, True, nullptr);
    if (dialog_.keyboardMoved()) begin(false);
  });
  onCallback(widget_, XmNlosingFocusCallback, [this](XtPointer) {
    XtVaSetValues(widget_, XmNcursorPositionVisible, False, nullptr);
    // When the whole window loses the keyboard, the field is left as soon as another of ours has it.
    if (!app().isLeavingWindow() && dialog_.keyboardMoved()) settle();
  });
  listenForPastes(widget_);
  ready();
}

void EditItem::setTitle(const std::string& text) {
  if (text == title()) return;
  const bool before = quiet_;
  quiet_ = true;
  XmTextFieldSetString(widget_, const_cast<char*>(text.c_str()));
  XmTextFieldSetInsertionPosition(widget_, XmTextFieldGetLastPosition(widget_));
  quiet_ = before;
}

std::string EditItem::title() const {
  char* text = XmTextFieldGetString(widget_);
  std::string copy = text != nullptr ? text : "";
  XtFree(text);
  return copy;
}

void EditItem::setEnabled(bool enabled) {
  BaseItem::setEnabled(enabled);
  const bool white = enabled && (line().flags & IF_READONLY) == 0;
  const Pixel ground = app().look().pixel(white ? color::kPaper : color::kGround);
  XtVaSetValues(widget_, XmNbackground, ground, XmNtopShadowColor, ground, nullptr);
}

void EditItem::selectText(int characters) {
  if (!XtIsRealized(widget_)) {
    toSelect_ = characters;
    return;
  }
  const XmTextPosition last = XmTextFieldGetLastPosition(widget_);
  XmTextFieldSetSelection(widget_, 0, characters < 0 ? last : std::min<XmTextPosition>(characters, last),
                          XtLastTimestampProcessed(XtDisplay(widget_)));
}

void EditItem::refresh() {
  if (toSelect_ && XtIsRealized(widget_)) selectText(*std::exchange(toSelect_, std::nullopt));
}

void EditItem::enterText(const std::string& text) {
  XmTextFieldSetString(widget_, const_cast<char*>(text.c_str()));
  XmTextFieldSetInsertionPosition(widget_, XmTextFieldGetLastPosition(widget_));
}

void EditItem::insert(const std::string& text) {
  if (!isEditable()) return;
  const XmTextPosition cursor = XmTextFieldGetInsertionPosition(widget_);
  XmTextPosition left = cursor;
  XmTextPosition right = cursor;
  const bool selected = XmTextFieldGetSelectionPosition(widget_, &left, &right) != False;
  if (!selected || cursor < left || cursor > right) left = right = cursor;
  XmTextFieldReplace(widget_, left, right, const_cast<char*>(text.c_str()));
}

void EditItem::edit(int command) {
  Display* display = XtDisplay(widget_);
  const Time time = XtLastTimestampProcessed(display);
  if (command == M_EDIT_SELECT_ALL) return selectText(-1);
  if (command == M_EDIT_PASTE) return paste(*this, XInternAtom(display, "CLIPBOARD", False), time);
  const std::unique_ptr<char, void (*)(char*)> selected(XmTextFieldGetSelection(widget_), XtFree);
  if (selected && putOnClipboard(widget_, selected.get(), time) && command == M_EDIT_CUT && isEditable())
    XmTextFieldRemove(widget_);
}

Cell EditItem::cell() const {
  const Look& look = app().look();
  const int frame = 2 * look.line();  // border and highlight
  const Extent size{look.columns(face(), std::max(1, line().columns)) + 2 * (look.px(kFieldWidth) + frame),
                    look.lineHeight(face()) + 2 * (look.px(kFieldHeight) + frame)};
  return leaf(size, look.px(kFieldHeight) + frame + look.ascent(face()));
}

}  // namespace xvt
