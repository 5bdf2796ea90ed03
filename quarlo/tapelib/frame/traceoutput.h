/// Where the traces of a reformat go: a dataset, SEG Y on disk, SEG Y on all output tapes, or nowhere, to see what a
/// run would make.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libkyr/datasets.h"
#include "quarlo/tapelib/frame/tapechange.h"

/// What is known of the traces before the first of them.
struct TraceCounts {
  int records = 0;  ///< announced where the input does not know them
  int tracesPerRecord = 0;
  int samples = 0;
  double interval = 0;  ///< seconds
};

/// What came of handing a trace over.
enum class TracePutAnswer { Written, LeftOut, Failed, Declined };

/// Calls that fail have said why on the console.
class TraceOutput {
 public:
  virtual ~TraceOutput() = default;

  /// Opens the output for these traces. @param from the source, whose properties a dataset takes over
  virtual bool begin(const TraceCounts& counts, Link from) = 0;
  /// Takes a trace in its turn. @return Declined when the user wanted no further tape
  virtual TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) = 0;
  /// Ends the output as it is. @param records,largest how many records there are, and how many places the largest has
  virtual bool finish(JobEnd end, int records, int largest) = 0;
  /// Traces that had been accepted and that the disk could not keep.
  virtual std::int64_t lost() const { return 0; }
  /// Lines that belong to the end of the run.
  virtual void tellSummary() {}
};

/// The output of a run: the type that the record names, on unit 1 of its units.
/// @param block the output module's parameter block @param told what the text header of SEG Y says about the input
/// @return null after a console line
std::unique_ptr<TraceOutput> makeTraceOutput(ProcessRecord* procRecord, const int* block, std::string told);
