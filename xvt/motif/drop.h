/// Files that another program drags over a window and lets go there: the receiver of XDND, of text/uri-list alone.
#pragma once

#include <Xm/Xm.h>

namespace xvt {

/// From now on files can be dropped on this dialog's shell, which is realized.
void listenForDrops(Widget shell);

}  // namespace xvt
