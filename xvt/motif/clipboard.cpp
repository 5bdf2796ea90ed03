#include "xvt/motif/clipboard.h"

#include <X11/keysym.h>
#include <Xm/TextF.h>

#include "xvt/motif/shell_window.h"

namespace xvt {

bool isStandardCommand(int command) { return command >= M_EDIT_CUT && command <= M_EDIT_SELECT_ALL; }

int standardCommandFor(KeySym key, unsigned modifiers) {
  if (modifiers != ControlMask) return 0;
  switch (key) {
    case XK_x:
      return M_EDIT_CUT;
    case XK_c:
      return M_EDIT_COPY;
    case XK_v:
      return M_EDIT_PASTE;
    case XK_a:
      return M_EDIT_SELECT_ALL;
    default:
      return 0;
  }
}

bool carryOut(int command, ShellWindow& window) {
  if (window.editStandard(command)) return true;
  Widget field = XmGetFocusWidget(window.shell());
  if (field == nullptr || !XmIsTextField(field)) return false;
  const Time time = XtLastTimestampProcessed(XtDisplay(field));
  switch (command) {
    case M_EDIT_CUT:
      XmTextFieldCut(field, time);
      break;
    case M_EDIT_COPY:
      XmTextFieldCopy(field, time);
      break;
    case M_EDIT_PASTE:
      XmTextFieldPaste(field);
      break;
    default:
      XmTextFieldSetSelection(field, 0, XmTextFieldGetLastPosition(field), time);
  }
  return true;
}

}  // namespace xvt
