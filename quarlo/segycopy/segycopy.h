/// The SEG Y copy: selects, sorts, joins and splits SEG Y data on tape and disk, trace by trace.
#pragma once

#include "quarlo/segycopy/segycopy_params.h"
#include "quarlo/segycopy/segycopy_report.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Copies from unit 0 to unit 1 (tapes: all outputs) as SgyParams says. A disk input is open and at its start.
/// @return JOB_RESULT
int doSegyCopy(UnitStruct* ioUnit);
