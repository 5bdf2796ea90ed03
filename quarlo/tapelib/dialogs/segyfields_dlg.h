/// The lists of header fields in dialogs, and what they say about fields that overlap or leave their header.
#pragma once

#include "quarlo/tapelib/formats/segyformat.h"

/// Number of the list control that maps fields to a dataset's trace properties. The other lists show header fields.
constexpr int kSegyMappingList = 3;

/// Backgrounds of a list, as 0xRRGGBB.
constexpr int kFieldsSoundColor = 0xFFFFFF;
constexpr int kFieldsBadColor = 0xFFAAAA;

/// Colours the list by the flags that boundsCheck gathered over all its fields, and warns when it turns from white to
/// red.
/// @param color the list's background as it was last set here; fieldsSoundColor before the first call
void boundsError(WINDOW theWindow, int theList, unsigned int boundsFlags, int* color);

/// Fills the list control with the fields' descriptions and selects the format's current row. In the mapping list the
/// mapped fields are left out; in the others a field with a problem gets a mark.
/// @return the fields' flags, for boundsError
unsigned int doFieldList(const SegyFormat* theFormat, const SegyField* theFields, WINDOW theDialog, int theDlgList);
