/// What a SEG Y copy says of its settings and of its input before it copies.
#pragma once

#include <span>

/// Prints the settings of the range limit and of the sort.
void report();

/// Warns in one line of files that are read otherwise than their binary header says: little-endian ones, those with
/// extended text headers or of revision 2, those whose samples are not as long as they are taken to be.
void warnOfUnusualFile(std::span<const char> binaryHeader);
