/// Where a new window goes on the screen.
#pragma once

#include <vector>

#include "xvt/layout.h"

namespace xvt {

/// A place of this size that covers no taken rectangle and lies wholly on the screen: the wished one if that is free,
/// else the free one nearest to it, else (with no such room left) the one that hides least, above all of the windows
/// that stand last in `taken`. All rectangles are outer ones, frames included.
PNT placeBeside(Extent screen, const std::vector<RCT>& taken, Extent size, PNT wish, int step);

/// The middle of `over`, moved onto the screen and off a parent that it would hide wholly.
PNT placeOver(Extent screen, const RCT& over, Extent size, int step);

/// The nearest place at which all of the window (its upper left part, if it is too large) is on the screen.
PNT onScreen(Extent screen, PNT place, Extent size);

}  // namespace xvt
