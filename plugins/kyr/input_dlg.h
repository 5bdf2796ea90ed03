/// The parameter dialog of datasets as input.
#pragma once

#include "quarlo/tapelib/frame/formatblocks.h"

/// Lets the user edit the block, which changes when he presses OK.
void editDatasetInput(KyrDatasetInput* block);
