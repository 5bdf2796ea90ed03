/// What the dialogs of the tape dump and the file dump have in common: the choice of a display format, and the button
/// that shows and hides their dump window.
#pragma once

#include "quarlo/dump/dumpformat.h"
#include "xvt/xvt.h"

/// The numbers of those controls. The radio buttons of a pair follow one another.
struct DumpControls {
  int formats;
  int signedInt;
  int unSignedInt;
  int bigEndian;
  int littleEndian;
  int showWindow;
};

/// Fills the list of formats and shows the style. @return false when the list could not be built
bool showStyle(WINDOW dialog, const DumpControls& controls, const DumpStyle& style);

/// Takes over what the user chose, if the event is a choice of format, sign or byte order. @return whether it was
bool chooseStyle(WINDOW dialog, const EVENT& event, const DumpControls& controls, DumpStyle* style);

/// Shows or hides a dump window, notes it in its flag and names the button after what it does next.
void setDumpVisible(WINDOW dialog, const DumpControls& controls, WINDOW dumpWindow, short* isVisible, bool visible);

/// Names the button after what a press on it does.
void nameShowButton(WINDOW dialog, const DumpControls& controls, bool visible);
