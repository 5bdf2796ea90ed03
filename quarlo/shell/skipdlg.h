/// What both skip dialogs do; they differ in what they space over.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

using SkipOperation = int (*)(UnitStruct* units, int uNum, int count);

/// A skip dialog's handler: OK runs `skip` on the input with the count typed (1 at first).
long skipDialogEvent(WINDOW window, const EVENT& event, SkipOperation skip);
