/// Values into the fields of SEG Y headers: conversion between the types, scaling, bytes in their order.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "quarlo/tapelib/formats/segyformat.h"

/// A number as an integer: cut towards zero, held at the type's ends. NaN becomes 0.
template <typename T>
T cutTo(double value) {
  using Ends = std::numeric_limits<T>;
  if (std::isnan(value)) return 0;
  // The upper end of 64 bits is none of double precision: its neighbour is, and lies outside.
  if (value >= static_cast<double>(Ends::max())) return Ends::max();
  return value <= static_cast<double>(Ends::min()) ? Ends::min() : static_cast<T>(value);
}

/// What came of putting a value.
enum class FieldPut {
  Stored,
  Missing,  ///< no field of this name, or a type that is none: nothing was stored
  Outside   ///< the header does not hold the field: nothing was stored
};

/// Converts a value to another type. Integers become narrower by losing their high bits (so that an unsigned value
/// keeps its bit pattern) and wider by their sign. Floats become integers by truncation towards zero, at most the
/// type's ends; NaN becomes 0.
/// @param inputType,outputType KyrType; with any other nothing is written
/// @return whether the output was written
bool segyCoerce(const FieldValue* inputValue, int inputType, FieldValue* outputValue, int outputType);

/// Stores a value of the field's type, times the field's scale factor, at the field's offset; products are truncated
/// towards zero to the field's integer type, at most to its ends. Never touches a byte outside `header`.
/// @param swap reverse the bytes of the host's order (for a big-endian header)
FieldPut encodeSegyField(std::span<char> header, const FieldValue* aValue, const SegyField* field, bool swap);

/// Stores a number times the field's scale factor, rounded to the nearest where the field holds integers, at most to
/// its type's ends.
FieldPut encodeSegyNumber(std::span<char> header, double number, const SegyField& field, bool swap);

/// Finds the field `name` and stores the value in it; the field's own fixed value if it has one.
/// @param variable address of the value, of type `dataType` (KyrType), unaligned or not
/// @param swap see encodeSegyField
FieldPut putFieldValue(const void* variable, const SegyField* fieldList, std::span<char> header, bool swap,
                       int dataType, const char* name);

/// The fixed value of the field `name` as an integer; `otherwise` when there is no such field or it has none.
int overrideOf(const SegyField* fieldList, const char* name, int otherwise);

/// Bytes of a sample of this SEG Y sample format code: 2 for the codes 3 and 8, 4 for every other.
int GetSegyBytes(int fmtCode);
