/// Files that are dropped on a dialog. A drop presses those of the dialog's buttons that take a file (IF_FILE,
/// IF_FILES), one after another, and the handler of such a button asks here before it opens a file box.
#pragma once

/// The absolute path of the file that the button was pressed with: once for each press, null when it was the user's
/// own. Valid until the handler returns.
const char* xvt_drop_take_path();
