/// Properties of datasets and traces by number, and the trace header that holds the latter. Tables: docs/libkyr.md.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "libkyr/kyrtype.h"

/// What a whole dataset has.
enum DatasetProperty : int {
  dsRecords = 0,
  dsTotalTraces = 1,      ///< records x traces per record: follows from those two, setting it changes nothing
  dsLargestRecord = 2,    ///< traces of the largest record: follows from the traces per record likewise
  dsTracesPerRecord = 6,  ///< trace places of every record
  dsSamples = 8,          ///< samples of every trace
  dsSampleInterval = 11,  ///< float, seconds
  dsMinReceiverLocation = 21,
  dsMaxReceiverLocation = 22,
  dsMinOffset = 23,  ///< float, as dsMaxOffset
  dsMaxOffset = 24,
  dsMinSourceLocation = 25,
  dsMaxSourceLocation = 26,
  dsMinCmpLocation = 27,
  dsMaxCmpLocation = 28,
  dsMinReceiverLine = 29,
  dsMaxReceiverLine = 30,
  dsMinSourceLine = 31,
  dsMaxSourceLine = 32,
  dsMinCmpLine = 33,
  dsMaxCmpLine = 34,
  dsMinFieldFile = 84,
  dsMaxFieldFile = 85,
};

/// What one trace has. Property p is kept in word p of the trace header.
enum TraceProperty : int {
  trNone = 0,  ///< no property
  trCmpLine = 2,
  trCmpLocation = 3,  ///< float, as the other locations
  trSourceLine = 4,
  trSourceLocation = 5,
  trReceiverLine = 6,
  trReceiverLocation = 7,
  trFieldFile = 8,
  trTraceNumber = 9,  ///< running number in the dataset
  trChannel = 10,
  trKillFlag = 11,   ///< 0 for a live trace, else KillFlag bits
  trTraceType = 12,  ///< as in SEG Y: 1 seismic data
  trOffset = 16,     ///< float, source to receiver
  trSourceX = 17,    ///< float, as all coordinates and elevations
  trSourceY = 18,
  trSourceElevation = 19,
  trReceiverX = 20,
  trReceiverY = 21,
  trReceiverElevation = 22,
};

/// Why a trace is dead. Any bit makes it so.
enum KillFlag : int {
  killNeverWritten = 1,  ///< set by the library: nobody wrote this trace
  killUnreadable = 2,    ///< set by the library: the trace is lost or damaged, its samples are zeros
  killGeometry = 16,
  killProcessing = 32,
  killOther = 64,
};

/// Unit codes of the property calls. Times are kept in seconds; other properties know no units.
constexpr int gUnknownUnits = 0;  ///< as kept
constexpr int gSecondsUnits = 1;
constexpr int gMillisecondsUnits = 2;
constexpr int gMicrosecondsUnits = 3;

constexpr std::size_t kTraceHeaderWords = 200;

/// A trace header. Floats are kept as their bits. Zero-filled it belongs to a live trace.
struct TraceInfo {
  std::array<std::uint32_t, kTraceHeaderWords> words;
};

/// Fetches a property from a trace header, converted to the caller's type: a float to the nearest integer (half away
/// from zero), beyond the integer's range to its end; null (nullvalue.h) to the null of the type where it has one.
/// @param type KyrType of what `value` points to
/// @param units unit code; gUnknownUnits takes the value as it is kept
/// @return 0, or kyrBadCall for an unknown property, type or unit; the value is then zero
int GetTraceProperty(int property, int type, int units, void* value, const TraceInfo* header);

/// Stores a property into a trace header, converted likewise. On failure the header stays as it was.
int SetTraceProperty(int property, int type, int units, const void* value, TraceInfo* header);

/// Whether the trace of a header is dead: any bit of its kill flag is set. A null kill flag is no kill.
bool IsDead(const TraceInfo& header);

/// One line of the property tables.
struct PropertyEntry {
  int code;
  const char* name;  ///< one word, as kyrtool takes and shows it
  bool isFloat;
  bool isTime;
};

/// Whether a dataset property is one of the five counts, which cannot be null.
constexpr bool isCountProperty(int property) {
  return property == dsRecords || property == dsTotalTraces || property == dsLargestRecord ||
         property == dsTracesPerRecord || property == dsSamples;
}

/// The named properties. Codes beside them that are free for the use of modules: traces 100 to 149 (integers) and 150
/// to 199 (floats), datasets 100 to 149 and 150 to 214. All other codes are refused.
std::span<const PropertyEntry> tracePropertyTable();
std::span<const PropertyEntry> datasetPropertyTable();
