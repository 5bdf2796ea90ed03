#include "xvt/desk/item.h"

#include <algorithm>

#include "xvt/desk/dialog.h"
#include "xvt/desk/pump.h"

namespace xvt {

std::string BaseItem::name() const { return line_.name != nullptr ? line_.name : std::to_string(line_.id); }

bool BaseItem::isSensitive() const { return enabled_ && owner_.isEnabled(); }

void BaseItem::setEnabled(bool enabled) {
  enabled_ = enabled;
  if (!enabled) dropKeyboard();
  showEnabled();
  owner_.enableLabels(*this);
}

void BaseItem::setVisible(bool visible) {
  visible_ = visible;
  if (!visible) dropKeyboard();
}

/// Led on to the next control, it would have keys that are on their way act there.
void BaseItem::dropKeyboard() {
  if (owner_.isVisible() && owner_.focused().get() == this) owner_.restKeyboard();
}

void BaseItem::raise() { owner_.raise(); }

void BaseItem::takeFocus() {
  if (!owner_.isVisible()) return owner_.setFirstFocus(this);
  if (line_.kind == IK_EDIT && owner_.edited() != this) owner_.settle();
  // Going where it is already would be told as leaving and coming back when the pointer is in the window.
  if (owner_.focused().get() != this) owner_.moveKeyboard(*this);
}

void BaseItem::tell(CTL_ACTION what) {
  EVENT event;
  event.type = E_CONTROL;
  event.ctl.id = line_.id;
  event.ctl.what = what;
  owner_.tell(event);
}

void BaseItem::pressed() {
  owner_.settle();
  tell(CTL_PRESS);
}

// ---- edit fields --------------------------------------------------------------------------------------------------

void BaseItem::begin(bool resumed) {
  if (editing_) return;
  if (owner_.edited() != nullptr) owner_.edited()->settle();
  editing_ = true;
  owner_.setEdited(this);
  if (!resumed) tell(CTL_FOCUS_GAIN);
}

void BaseItem::settle() {
  if (!editing_) return;
  editing_ = false;
  if (owner_.edited() == this) owner_.setEdited(nullptr);
  tell(CTL_FOCUS_LOSS);
}

void BaseItem::type(const std::string& text) {
  Frame frame;
  takeFocus();
  begin(false);
  enterText(text);
}

bool BaseItem::complete() {
  if ((line_.flags & IF_COMPLETE) == 0 || !isEditable()) return false;
  Frame frame;
  const std::string before = title();
  tell(CTL_COMPLETE);
  return owner_.isDying() || title() != before;
}

// ---- lists --------------------------------------------------------------------------------------------------------

bool BaseItem::choose(int row, bool add) {
  Frame frame;
  // First, for what a handler shows anew when a field is left must not undo the choice.
  owner_.settle();
  if (owner_.isDying() || row >= rowCount()) return false;
  if (line_.kind == IK_MULTI && !add) clearRowSelection();
  setRowSelected(row, true);
  tell(CTL_SELECT);
  return true;
}

void BaseItem::doubleClick(int row) {
  choose(row, false);
  if (!owner_.isDying()) tell(CTL_DOUBLE);
}

void BaseItem::step(int rows) {
  int now = -1;
  for (int row = 0; row < rowCount(); ++row)
    if (isRowSelected(row)) now = row;
  const int wanted = std::clamp(now + rows, 0, std::max(0, rowCount() - 1));
  if (rowCount() > 0 && wanted != now) choose(wanted, false);
}

void BaseItem::listKey(Key key) {
  const int row = markedRow();
  switch (key) {
    case kUpKey:
      return markRow(std::max(0, row - 1));
    case kDownKey:
      return markRow(std::min(rowCount() - 1, row + 1));
    case kHomeKey:
      return markRow(0);
    case kEndKey:
      return markRow(rowCount() - 1);
    case kReturnKey:
    case kPadEnterKey:
    case ' ':
      closeList();
      if (row >= 0) choose(row, false);
      return;
    case kEscapeKey:
    case kTabKey:
      return closeList();
    default:
      return;
  }
}

}  // namespace xvt
