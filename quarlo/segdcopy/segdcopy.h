/// The SEG D copy: field files between tape and disk, without decoding their samples.
#pragma once

#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Copies from the first unit to the second (tapes: all outputs) as SgdParams says.
/// @return 0, or -1 when the job failed or could not start
int doSegdCopy(UnitStruct* ioUnit);
