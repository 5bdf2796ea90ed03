/// The merge: the records of several datasets, one input behind the other, in one output.
#pragma once

#include "xvt/xvt.h"

/// Merges InputList into outFile (mergelist.h); inputs that are left out leave the list, and the dialog's list box. The
/// output is marked as whole only when all that was asked for is in it, and never is one of the inputs.
/// @param theDlg the merge dialog; NULL_WIN for none
/// @return 1 after a full or stopped run, also when no input was left; 0 when it failed or was refused, or when there
///         is no progress dialog
int doKyrMerge(WINDOW theDlg);
