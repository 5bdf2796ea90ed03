/// Looking for words in the windows that show text: one box for all of them, and the same search by keys without it.
#pragma once

#include "quarlo/tapelib/dialogs/docscroll.h"

enum class FindDirection { forward, backward };

/// Opens the box for a window, or brings the box to it. What is selected on one line is proposed.
void openFindBox(const DocView& view);

/// Selects the next place where the words stand, from what is selected on and round the end of the text. The box says
/// what line it was, that the search went round, that there is no such place.
void findAgain(const DocView& view, FindDirection direction);

/// Closes the box if it is about this window.
void closeFindBox(WINDOW text);
