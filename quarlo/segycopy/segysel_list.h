/// List and polygon files: text files that users type by hand (docs/segy-copy.md).
///
/// Line ends may be those of any system, the last one may be missing; blank lines are passed over, tabs are blanks,
/// lines may have any length. What cannot be read as meant gets a console line that names file and line.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "libkyr/polygon.h"

/// An entry of a list; the secondary value is 0.0 in lists without.
struct RangeItem {
  double primary;
  double secondary;
};
// Sorted as items of two doubles.
static_assert(sizeof(RangeItem) == 2 * sizeof(double));

/// Reads the next list line that is not blank in range form: "P", "P S", "P1 - P2", "P1 - P2 S", "P S1 - S2" or
/// "P1 - P2 S1 - S2", secondary values only where the list limit uses them. Values that are not there are 0.0; an end
/// below its start counts as the start. A header line ("H...") has no values.
/// @return false on a read error, at the end of the file and for a line whose numbers are none
int getRange(std::FILE* file, double* primStart, double* primEnd, double* secStart, double* secEnd);

/// Number of values from `start` in steps of 1.0 while not above `end`; 1 when `end` is not above `start`.
/// @return 0 when there are more than `limit`, or the steps are lost in the size of the values
std::size_t stepsOf(double start, double end, std::size_t limit);

/// Reads all points of a list file, unsorted. A "-" anywhere in the file makes every line a range line.
/// @return false after a console line
bool readListFile(const std::string& path, bool useSecondary, std::vector<RangeItem>* points);

/// Reads a polygon file: the number of points, then a point a line.
/// @return false after a console line
bool readPolygonFile(const std::string& path, std::vector<PolygonElement>* points);
