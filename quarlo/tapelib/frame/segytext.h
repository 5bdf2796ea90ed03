/// The text header that a reformat writes: 40 lines that tell what was done.
#pragma once

#include <string>

#include "quarlo/tapelib/formats/segyformat.h"
#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/traceoutput.h"

/// 40 lines of 80 characters, each beginning with "C" and its number, without line ends.
/// @param told what the input is, see ReformatInput
std::string segyTextLines(const std::string& told, const SegyFormat& format, int sampleFormat,
                          const TraceCounts& counts, const KyrSegyOutput& how);
