/// The main dialog: a panel of buttons, one for each job.
#pragma once

#include "xvt/xvt.h"

long MainDlg_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Opens the main dialog, or raises it and gives it the keyboard.
void openMainDialog();

/// Passes the word that the units changed on to the job dialogs that show them.
void tellJobDialogs(EVENT* event);
