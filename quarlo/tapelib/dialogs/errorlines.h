/// Which lines of a log tell of what went wrong.
#pragma once

#include <string_view>

#include "quarlo/tapelib/dialogs/docscroll.h"

enum class LineKind { ordinary, warning, error };

LineKind kindOfLine(std::string_view line);

/// Selects the first error of the last job, or, where that one is selected, the next; the first warning where no line
/// is an error. Says so when there is neither.
void goToError(const DocView& view);
