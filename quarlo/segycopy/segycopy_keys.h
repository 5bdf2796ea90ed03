/// The header keys that a SEG Y copy looks at.
#pragma once

#include <optional>

#include "quarlo/segycopy/segycopy_params.h"

/// The field file number, reported whatever the other keys are.
constexpr HeaderKey kFieldFileKey = {9, DT_INT32};

/// True when the output is split at changes of the record key: not for several inputs, whose outputs' names would
/// collide, nor for a sorted copy.
bool splitsByKey();

/// Checks the keys in use against the trace header.
/// @return bytes of a trace that they need, or nothing after a console line
std::optional<int> bytesForKeys();
