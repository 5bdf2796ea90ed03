/// Spacing over tape files from the menu.
#pragma once

#include "xvt/xvt.h"

/// Modal, from DLG_SKIP_FILES.
long skipfiles_dialog_eh(WINDOW xdWindow, EVENT* xdEvent);
