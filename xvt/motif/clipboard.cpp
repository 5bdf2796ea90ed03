#include "xvt/motif/clipboard.h"

#include <X11/keysym.h>

#include "xvt/motif/dialog.h"

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
  const auto* dialog = dynamic_cast<Dialog*>(&window);
  if (dialog == nullptr) return false;
  const auto field = std::dynamic_pointer_cast<EditItem>(dialog->itemOf(XmGetFocusWidget(window.shell())));
  if (field) field->edit(command);
  return field != nullptr;
}

}  // namespace xvt
