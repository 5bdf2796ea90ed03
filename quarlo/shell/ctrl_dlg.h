/// The tape control dialog: positions the input tape at any time between jobs.
#pragma once

#include "quarlo/tapelib/tlv_fcn.h"
#include "xvt/xvt.h"

/// Bytes that makeBlockStr writes at most, the terminator included.
constexpr int kBlockStrSize = 24;

/// A block size in words: "1 byte", "512 bytes", "32 KB", "2 MB".
void makeBlockStr(char* dst, int bytes);

/// Modeless, from DLG_TAPE_CONTROL.
long control_dialog_eh(WINDOW xdWindow, EVENT* xdEvent);

/// Enables or disables the controls that need a tape and shows the drive's name and block sizes.
void set_ctrl_state(WINDOW xdWindow, int enable, const char* driveName, const UnitStruct* unit);

/// Opens the dialog, or raises it and gives it the keyboard.
void openTapeControl();
