/// The parameter dialog of SEG Y as input.
#pragma once

#include "quarlo/tapelib/frame/formatblocks.h"

/// Lets the user edit the block, which changes when he presses OK.
void editSegyInput(KyrSegyInput* block);
