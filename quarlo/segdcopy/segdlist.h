/// The two lists of a SEG D copy: which field files are kept or dropped, and which traces are zeroed.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

/// A run of whole numbers, both ends included.
struct IntRange {
  int start;
  int end;
};

/// Orders runs by their first number: below, at or above 0.
int CompareInts(const IntRange& one, const IntRange& other);

/// A sorted set of ints. Kept as runs, so that what it holds costs nothing however many there are.
class SortedIntArray {
 public:
  /// Adds every number from `start` to `end`; an end below the start adds the start only.
  void add(int start, int end);
  void clear();
  bool contains(int value) const;
  /// Place of a number from 0 in the sorted row of all, -1 when it is not there.
  long long indexOf(int value) const;
  /// The runs in order; no two touch.
  std::span<const IntRange> ranges() const;

 private:
  void settle() const;

  // Sorted and joined when first asked for.
  mutable std::vector<IntRange> runs_;
  mutable bool settled_ = true;
};

extern SortedIntArray FFIDList;  ///< field file numbers
extern SortedIntArray ZeroList;  ///< values of the zero list's key

/// Reads a list line: "A - B" gives both, anything else with a "-" in it gives A twice, another line one number.
/// Blanks and tabs stand where they like; what is no number counts 0, what is beyond an int as the nearest one.
void getRange(const char* str, int* start, int* end);

/// Reads the field file list that SgdParams names. @return 0, or -1 after a console line
int initFFIDList();
/// The same for the zero list.
int initTraceList();

/// Whether a field file is copied, by the list and its sense.
bool fieldFileInRange(int fieldFile);
/// Whether a trace with this key is zeroed.
bool traceInZeroRange(int trace);
