/// The file dump: pieces of a disk file of any size as text in a window, and the way to the reports on a dataset.
#pragma once

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

/// What a report's dialog is created with, valid for as long as it is up.
struct ReportRecord {
  FILE_SPEC inputFile;  ///< the dataset; the file dump has closed it
  WINDOW textWindow;    ///< the dump window, which receives the report
  WINDOW dlgWindow;     ///< the file dump; a press on its FD_SHOW_WINDOW shows or hides the dump window
  int* windowIsUp;      ///< 1 until the report's dialog clears it at its end, and then sends dlgWindow a user event
};

/// A report on a dataset; its dialog is modeless.
struct ReportDialog {
  const char* name;
  int resource;
  EVENT_HANDLER handler;  ///< null: not built yet
};

/// Opens a report's dialog on the open file.
void startReport(WINDOW theWindow, const ReportDialog& report);
