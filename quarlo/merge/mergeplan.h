/// The first half of a merge: which inputs can be joined, and what comes out.
#pragma once

#include <optional>
#include <string>

#include "libkyr/datasets.h"

/// The output of a merge.
struct MergePlan {
  int type = 0;
  int records = 0;
  int tracesPerRecord = 0;
  int samples = 0;
  float interval = 0;      ///< seconds
  bool isStacked = false;  ///< one record with the live traces of all inputs, each at its running number
};

/// Looks at the files of InputList and at what type is forced. Inputs that cannot be joined leave the list; the console
/// says why. @return nothing, after a console line, where the output cannot be: it is one of the inputs, or too large
std::optional<MergePlan> planMerge(ProcessRecord* record);

/// Why an input could not be opened, by the answer of the opening.
std::string openingText(int code, const std::string& path);

/// Finds the records of an input that hold a live trace. One that cannot be read is not known to be dead: it counts.
/// @param liveRecords how many records there are; receives how many of them are in the list
/// @param liveRecList room for the numbers of all records
void BuildLookupList(ProcessRecord* procRecord, Link link, int* liveRecords, int trcPerRec, int* liveRecList);
