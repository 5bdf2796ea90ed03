/// The window in which the pages of the guide are read.
#pragma once

#include <string>
#include <string_view>

#include "xvt/xvt.h"

/// Shows a page, or one of its sections ("merge.md#the-run").
void showHelp(std::string_view place);
/// Shows the list of all pages.
void showHelpContents();
/// Shows what the open window had before, as it was left.
void showLastHelp();
/// Shows what a message means; false when no page knows it.
bool explainMessage(std::string_view message);
/// Help on a window: on the message that is selected in it or that it shows, else on the window itself. In the help's
/// own window a line's reference is followed.
void helpOn(WINDOW window);
