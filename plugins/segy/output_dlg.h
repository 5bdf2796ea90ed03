/// The parameter dialog of SEG Y as output.
#pragma once

#include "quarlo/tapelib/frame/formatblocks.h"

/// Lets the user edit the block, which changes when he presses OK.
void editSegyOutput(KyrSegyOutput* block);
