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
};

/// Fills the list of formats and shows the style. @return false when the list could not be built
bool showStyle(WINDOW dialog, const DumpControls& controls, const DumpStyle& style);

/// Takes over what the user chose, if the event is a choice of format, sign or byte order. @return whether it was
bool chooseStyle(WINDOW dialog, const EVENT& event, const DumpControls& controls, DumpStyle* style);

/// The dump window of a dump dialog, and the dialog's button that shows and hides it.
class DumpPane {
 public:
  /// @param isVisible the window's flag, which others read and clear too
  constexpr DumpPane(int dumpType, int showButton, short* isVisible)
      : type_(dumpType), button_(showButton), isVisible_(isVisible) {}

  /// Creates the window, hidden. @return false after an error box; the lines are lost then
  bool open(WINDOW dialog);
  void close();
  /// Shows the window unless it is shown.
  void show();
  void toggle();
  WINDOW handle() const { return window_; }

 private:
  void setVisible(bool visible);
  void nameButton() const;

  int type_;
  int button_;
  short* isVisible_;
  WINDOW dialog_ = NULL_WIN;
  WINDOW window_ = NULL_WIN;
};
