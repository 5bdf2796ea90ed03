/// Where a new window goes on the screen, and how large it may be there: the one rule for all of them.
///
/// The console takes the upper left, other documents what is free to its right, dialogs stand below. Nothing is covered
/// as long as there is room; what can be smaller becomes smaller first; and if something must be covered, then not the
/// window that the new one was opened from. All rectangles are outer ones, frames included.
#pragma once

#include <vector>

#include "xvt/layout/layout.h"

namespace xvt {

/// What a window asks for.
struct WindowWish {
  Extent size;          ///< that it needs
  Extent least;         ///< that it can do with
  PNT place;            ///< where it would stand if it were alone
  RCT bounds;           ///< that it keeps to if it can
  bool is_box = false;  ///< a question or a note: in the middle of its opener, if that is larger
};

/// A window that stands already.
struct Standing {
  RCT place;
  bool opener = false;  ///< the new window was opened from it
};

/// A place that covers no other window and lies wholly on the screen: the wished one if that is free, else the free one
/// nearest to it; else the largest free room that is large enough, width before height; else the place that hides
/// least, of the opener above all, then of the windows that stand last in `standing`. `step` is the distance between
/// windows.
RCT placeWindow(Extent screen, const std::vector<Standing>& standing, const WindowWish& wish, int step);

/// What they have in common, in pixels.
long overlap(const RCT& one, const RCT& other);

/// The room that the console keeps to, so that dialogs find theirs below it and a dump beside it.
RCT upperLeft(Extent screen);

/// Where a dialog would stand: below the console; if it is too tall for that, in the lower right corner, so that the
/// screen is not cut in two.
PNT belowConsole(Extent screen, Extent size, int step);

/// Where a window would stand that belongs to `opener`: in its middle.
PNT middleOf(const RCT& opener, Extent size);

/// The nearest place at which all of the window (its upper left part, if it is too large) is on the screen.
PNT onScreen(Extent screen, PNT place, Extent size);

}  // namespace xvt
