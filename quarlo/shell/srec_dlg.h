/// Spacing over tape blocks from the menu.
#pragma once

#include "xvt/xvt.h"

/// Modal, from DLG_SKIP_RECORDS.
long skiprecords_dialog_eh(WINDOW xdWindow, EVENT* xdEvent);
