/// The level tests, which differ by a table of words and a measure: those with one value a trace, and those that
/// compare two records.
#pragma once

#include <functional>
#include <vector>

#include "quarlo/instruments/testframe.h"

// ---- one value a trace --------------------------------------------------------------------------------------------

struct OneLevelTest {
  TestWords words;
  const char* aboveLimit;  ///< a line before the limit's; null for none
  const char* limitLine;
  const char* tableHead[2];
  const char* averageLine;
};

struct OneLevelSettings {
  int fieldFile;
  int firstTrace;
  int* lastTrace;        ///< is cut back to the traces of a record
  const bool* removeDC;  ///< null for a test that says nothing of DC
  float limit;           ///< a trace fails whose value is beyond it, whatever its sign
};

/// What a test does with the record before its table. Takes from `numbers` the traces that the table is not about; with
/// none left there is no table.
using Preparation =
    std::function<void(TestRun& run, const FieldRecord& record, float* trace, std::vector<int>* numbers)>;

/// @param measure may change the samples @return as runTest
int runOneLevelTest(const OneLevelTest& test, const OneLevelSettings& settings,
                    const std::function<float(float* samples, int count)>& measure, const Preparation& prepare = {});

// ---- two records --------------------------------------------------------------------------------------------------

struct TwoRecordTest {
  TestWords words;
  const char* limitLine;
  const char* tableHead[2];
};

struct TwoRecordSettings {
  int signalFile;
  int noiseFile;
  int firstTrace;
  int* lastTrace;
  bool removeDC;
  float limit;
};

/// The levels of a trace that lives in both records: root mean squares over whole cycles, in volts.
struct LevelPair {
  TestedTrace trace;
  float signal;
  float noise;
};

/// @param report writes the table and the lines behind it @return as runTest
int runTwoRecordTest(const TwoRecordTest& test, const TwoRecordSettings& settings,
                     const std::function<void(TestRun& run, const std::vector<LevelPair>& levels)>& report);
