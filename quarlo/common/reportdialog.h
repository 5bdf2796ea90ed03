/// What the dialogs of reports on a dataset have in common: how the file dump hands a dataset over to one of them, the
/// sequence in which a report runs, and the dataset's way back.
#pragma once

#include <functional>

#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "xvt/xvt.h"

/// What a report's dialog is created with, valid for as long as it is up.
struct ReportRecord {
  FILE_SPEC inputFile;  ///< the dataset; the file dump has closed it
  WINDOW textWindow;    ///< the dump window, which receives the report
  WINDOW dlgWindow;     ///< the file dump; a press on its FD_SHOW_WINDOW shows or hides the dump window
  int* windowIsUp;      ///< the file dump's flag: 0 says that the report dialog is gone
};

/// A report on a dataset; its dialog is modeless.
struct ReportDialog {
  const char* name;
  int resource;
  EVENT_HANDLER handler;  ///< null: not built yet
};

/// Opens a report's dialog. @return false after a box, and the record's flag is 0 then
bool openReport(const ReportDialog& report, ReportRecord* record);

/// Does what belongs to an event of a report's dialog. Closing it stops its report first; at its end the dataset goes
/// back to the file dump.
/// @param does what the dialog does of its own; closing is seen to here
long reportEvents(WINDOW dialog, const EVENT& event, DialogEvents does);

/// Closes a report's dialog, behind the end of a report that it runs.
void closeReport(WINDOW dialog);

/// Runs a report into the dump window, which is shown and empty then. The file dump's start button is disabled
/// meanwhile, and stays so when the report was not written to its end. An exception that leaves the report is told in
/// a console line. Nothing happens, with a word to the user, while another job is running.
/// @param report is told its stop flag; answers whether it was written to its end
void runReport(WINDOW dialog, const std::function<bool(int* stopFlag)>& report);
