/// What the dialogs have in common that run jobs on units: the status text, what is possible now, and one owner of the
/// run, which puts all of it back whatever becomes of the job.
#pragma once

#include <functional>
#include <string>

#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/eotopts.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// States of such a dialog's controls.
enum COPY_STATE : int {
  COPY_NOT_READY = 0,  ///< inputs and outputs can be chosen, Start is disabled
  COPY_READY = 1,
  COPY_RUNNING = 2  ///< nothing can be chosen or started
};

/// What tells one such dialog from another.
struct UnitDialogParts {
  int status;                                          ///< control of the status text; 0 where the dialog has none
  int closeButton;                                     ///< ends the dialog, also during its job
  bool (*ready)();                                     ///< whether a job could start on the units as they are
  void (*showState)(WINDOW dialog, COPY_STATE state);  ///< enables what fits, and shows the units
  int (*endUnits)();               ///< the units' end behind every run; nonzero when the last of an output was lost
  void (*closeUnits)() = nullptr;  ///< when the dialog goes; null where they stay open
};

class UnitDialog {
 public:
  constexpr explicit UnitDialog(const UnitDialogParts& dialogParts) : parts_(dialogParts) {}

  bool isRunning() const { return running_; }

  /// Does what belongs to an event: another window's change of the units is followed, closing stops the dialog's job
  /// first, and the units go with the dialog unless a job still has them in hand: it closes them itself.
  /// @param does what the dialog does of its own at its creation, its controls and its end
  long events(WINDOW dialog, const EVENT& event, DialogEvents does);
  /// Whether the event is a press for the dialog to act on. The close button's press is seen to here; all others are
  /// refused during a job, with the reason in the status text too.
  bool admits(WINDOW dialog, const EVENT& event) const;

  /// A newly opened dialog: "Idle".
  void open(WINDOW dialog);
  /// After a choice made here: "Ready" or "Idle", and word to all who show the units.
  void showChange(WINDOW dialog);
  /// Another window changed the units.
  void follow(WINDOW dialog);
  /// Puts a text in place of the status until that is shown anew.
  void remark(WINDOW dialog, const char* text) const;
  /// What came of a choice of drives: true for a drive; that none was chosen is told in the status text too.
  bool takes(WINDOW dialog, DriveAnswer answer) const;
  /// Asks for the input drive and opens it in place of what was open there.
  void chooseInputTape(WINDOW dialog, UnitStruct* units);
  /// As refuseDuringJob, with the reason in the status text too.
  bool refuses(WINDOW dialog) const;

  /// As run, for a press of Start: without units that are ready nothing begins, and the dialog shows that.
  /// @param job is told its stop flag
  void start(WINDOW dialog, const std::function<int(const int& stopped)>& job);

  /// Runs a job, from "Running" to "Complete" or "Failed". An exception that leaves the job is told in a console line
  /// and is a failure. Behind the job its units are ended, and what waited for the end of jobs is done.
  /// @param stopFlag as for RunningJob
  /// @param job answers JOB_OK, or JOB_NOT_BEGUN to end "Idle"; all else is a failure
  /// @param endUnits the units' end behind this run where it is not the dialog's usual one
  void run(WINDOW dialog, int* stopFlag, const std::function<int()>& job, int (*endUnits)() = nullptr);

 private:
  void close(WINDOW dialog) const;
  void releaseUnits() const;
  void show(WINDOW dialog, COPY_STATE state) const;
  void showUnits(WINDOW dialog) const;

  UnitDialogParts parts_;
  const char* word_ = "Idle";
  bool running_ = false;
};
