/// Which traces a SEG Y copy keeps: the range limit by list or polygon, its log, the range of what was kept.
#pragma once

#include <string>
#include <vector>

#include "libkyr/files.h"
#include "libkyr/polygon.h"
#include "quarlo/segycopy/segysel_list.h"

// The limit of the job in progress.
extern std::vector<PolygonElement> RangePolygon;  ///< closed: the last corner is the first again
extern double MinX, MaxX, MinY, MaxY;             ///< the polygon's bounding box
extern std::vector<RangeItem> PointsList;         ///< sorted
extern int ControlPoints;                         ///< entries of PointsList
extern FileHandle LogFile;  ///< key values of the kept traces, a line each; empty when not logging

extern double Primary, Secondary;  ///< key values of the trace that was tested last
// The range of the kept traces. The first trace kept in a run of the program sets it; from then on it only widens, also
// from job to job.
extern double MinPrimary, MaxPrimary, MinSecondary, MaxSecondary;

/// The path of the list or polygon file of the limit in force; empty when none is read.
std::string limitSourcePath();
/// The path of the log that the limit in force will write. Typed polygons log to the application's default directory,
/// which becomes their `dir`.
std::string rangeLimitLogPath();

/// Builds RangePolygon from the typed points or the polygon file and opens the log. @return false after a console line
int initPolygon();
/// Reads the list file into PointsList, sorts it and opens the log. @return false after a console line
int initPointsList();
/// Closes the log and frees the list or polygon.
void endRangeLimit();

/// True when the trace is to be kept, always without a range limit. A kept trace is logged and widens the range.
/// @param trace holds the bytes that the limit's keys need
int traceInRange(const char* trace);
/// True when (Primary, Secondary) is in PointsList, to the last bit.
int pointInList();
