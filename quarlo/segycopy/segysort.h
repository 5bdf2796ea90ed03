/// The heap sort that orders lists of values and sort indexes.
///
/// Items of one size lie back to back and begin with doubles: two that count, or three in items of 36 bytes. The order
/// of equal items is the heap's own and part of what a sorted copy is: it is not stable.
#pragma once

/// Largest item in bytes.
constexpr int kSortScratchBytes = 16396;
/// Items of this size have a third value.
constexpr int kThreeKeyBytes = 36;

/// Three-way comparison. @return -1, 0 or 1; 1 when a NaN is met
int compareItems(const char* item1, const char* item2, int itemSize);

/// Sifts item `left` (from 1) down the heap that ends with item `right`. An equal child moves up.
void segySift(int left, int right, char* vect, int size);

/// Sorts in place, ascending. Sizes below two doubles or above SORT_SCRATCH_BYTES are left as they are.
void segySort(char* vect, int samples, int size);
