/// The standard editing commands, carried out on whatever has the keyboard.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

class ShellWindow;

bool isStandardCommand(int command);
/// The standard command that a key means where no menu says so, 0 for none.
int standardCommandFor(KeySym key, unsigned modifiers);
/// On the edit field or text view of `window` that has the keyboard; false when there is none.
bool carryOut(int command, ShellWindow& window);

}  // namespace xvt
