/// The file scan: one pass over the trace headers of an input, which leaves an index file beside it, a table of all
/// traces if so wanted, and a summary on the console.
#pragma once

#include <string>

#include "libkyr/process.h"

/// What a scan works on beside the input, which is unit 0: set by the dialog, read by the job.
struct IndexRequest {
  std::string module{};     ///< file name of the format module that reads; empty for a dataset read as it is
  std::string tablePath{};  ///< of the trace table; empty for none
};
extern IndexRequest indexRequest;

/// Scan the input, a SEG Y file whose table tells the byte of each trace, or a dataset.
/// @param inputParams the module's parameter block
/// @return 0; -1 after a failure or a stop: the index file may hold nothing but a header without entries then
int fileIndexSEGY(ProcessRecord* procRecord, int* inputParams);
int fileIndexKYR(ProcessRecord* procRecord, int* inputParams);
