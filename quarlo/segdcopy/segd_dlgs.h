/// The dialogs that edit the settings of a SEG D copy. Each edits a copy of its record, which OK stores.
#pragma once

#include "quarlo/segdcopy/segdcopy_params.h"
#include "xvt/xvt.h"

/// Options of the copy, modal, from DLG_SEGD: edits SgdParams and opens the two below.
long SegdCpy_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Field file list, modal, from DLG_SEGD_FILES. Its data is the record to edit; without one it edits SgdParams.
long SegdFFRangeDlg_eh(WINDOW xdWindow, EVENT* xdEvent);
/// Zero trace list and its key, modal, from DLG_SEGD_ZERO. Its data is as above.
long SegdListDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Sets every control of the options dialog from a record, and what can be used.
void setState(WINDOW theDialog, const SgdCopyParams* params);
