/// The outputs of a reformat, each made by its own file; makeTraceOutput chooses among them.
#pragma once

#include "quarlo/tapelib/frame/formatblocks.h"
#include "quarlo/tapelib/frame/traceoutput.h"

std::unique_ptr<TraceOutput> makeDatasetOutput(ProcessRecord* procRecord);
std::unique_ptr<TraceOutput> makeSegyOutput(ProcessRecord* procRecord, const KyrSegyOutput& how, std::string told);
std::unique_ptr<TraceOutput> makeCheckOutput(ProcessRecord* procRecord);

/// A trace property as an integer. @return `otherwise` for one that is null
int tracePropertyOr(const TraceInfo& header, int code, int otherwise);
/// Whatever is neither seismic data nor said to be dead: SEG Y's trace identification.
bool isAuxiliaryTrace(const TraceInfo& header);
