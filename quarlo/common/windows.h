/// Which windows are up, and how a change of the units is told to them.
#pragma once

#include "xvt/xvt.h"

extern WINDOW gMainDialogWindow;  ///< the main dialog, or NULL_WIN
extern int gMainWindowUp;         ///< 1 while the main dialog exists
extern WINDOW gControlWindow;     ///< the tape control dialog, or NULL_WIN
extern int gControlWindowUp;      ///< 1 while the tape control dialog exists
extern WINDOW gTAnlsWindow;       ///< the tape dump dialog, or NULL_WIN; kept by that dialog
extern int gTAnlsWindowUp;        ///< 1 while the tape dump dialog exists
extern int gFAnlsWindowUp;        ///< 1 while the file dump dialog exists

/// After any change of the units: turns `event` into the user event that says so and sends it to the task window (which
/// passes it on to the tape dialogs) and to the tape dump dialog.
void unitsChanged(EVENT* event);

/// As unitsChanged, where nobody needs the event.
void tellUnitsChanged();

/// The input tape was moved: the tape control dialog, if it is up, shows where it stands.
void tellControlDialog();

/// Destroys a dialog; one that runs a job goes when that has been stopped and has ended.
void destroyBehindJob(WINDOW dialog, bool runsJob);

/// Says in a note box that a feature is not part of this build. `what` begins the sentence: "Verify".
void notYetBuilt(const char* what);
