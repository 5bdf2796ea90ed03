/// The file dump: pieces of a disk file of any size as text in a window, and the way to the reports on a dataset.
#pragma once

#include "quarlo/common/reportdialog.h"
#include "xvt/xvt.h"

/// Modeless, from DLG_FILE_DUMP. A user event tells it that a report dialog has ended.
long FileDumpDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

// The formatters show the first `nBytes` bytes of the piece read last, in the dump window.
void fileHexDump(int nBytes);
void fileTextDump(int nBytes);
void fileShortDump(int nBytes);
void fileLongDump(int nBytes);
void fileFloatDump(int nBytes);

/// Shows the position and enables what is possible there.
void setCurrent(WINDOW theWindow);
/// Enables the controls. @param reportDlgIsUp the file belongs to a report dialog
void setDlgState(WINDOW theDlg, int reportDlgIsUp);
/// Fills the list of reports.
void initRepList(WINDOW theWindow);

/// Opens a report's dialog on the open file.
void startReport(WINDOW theWindow, const ReportDialog& report);
