/// The error options dialog: does an input error stop the job?
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Modal, from DLG_ERROR_OPTIONS, with the address of the input unit's `inputAbort` as its data (null: nothing to set).
/// It edits the four flags that begin there as one word: the box is checked when any of them is set; once the box was
/// toggled, OK stores the new value in `inputAbort` and clears the other three.
long ErrorDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Opens that dialog on the input unit of a job. The three flags of the word that are not the dialog's are afterwards
/// as they were. @param hint what becomes of read errors unless the job stops @return false when it could not be opened
bool editErrorOptions(UnitStruct* units, const char* hint);
