/// SEG Y output through a format description: the reel headers of an output, then trace after trace.
///
/// The names that the writer fills. Binary reel header: TracesPerRec, AuxPerRec, Dt, Nt, SampFormat, SweepLength,
/// SweepTrace, CorrCode. Trace header: TraceNumber, TraceType, Nt, Dt, FieldFile, FieldFileTraceNumber,
/// WeightingFactor. A name that a description lacks is passed over. Fields of other names are written when they have a
/// fixed value.
///
/// A field that its header does not hold is left out, and a value that its field does not hold (an integer of 16 bits,
/// for instance, counts to 65,535 at most) is cut, with a line on the console of the record, once for each output.
#pragma once

#include <string>

#include "libkyr/process.h"
#include "quarlo/tapelib/formats/segyformat.h"

/// Opens the output (unit 1 of the record's units if that is a disk file, else the output tapes, which are open) and
/// writes its reel headers, each as a block of its own to every output tape.
/// @param sampleInterval milliseconds; stored in microseconds
/// @param sweepLength milliseconds
/// @param ebcdicText 7-bit text of the reel header, a shorter one padded with blanks; null for a blank header
/// @return 0, or -1 after a console line: the job cannot go on
int initSegyOut(ProcessRecord* procRecord, SegyFormat* segyFmt, short tracesPerRecord, short auxPerRecord,
                float sampleInterval, int samplesPerTrace, short sampleFormat, short sweepLength, short sweepChannel,
                short corrFlag, const char* ebcdicText);

/// Puts another count of traces a record into the binary header of a file that initSegyOut began and that has reached
/// the system. @return false with errno
bool amendTracesPerRecord(const std::string& path, SegyFormat* segyFmt, short tracesPerRecord);

/// Fills the fields of a trace header. What no field covers stays as it is.
/// @param header itsTraceBytes bytes
/// @param sampleInterval milliseconds; stored in microseconds
void fillTraceHeader(SegyFormat* segyFmt, char* header, int traceNumber, int fieldFileNumber, int channel,
                     int traceType, int numberOfSamples, float sampleInterval);

/// Fills the fields of a trace header that the description maps from a trace's properties: each takes the first of its
/// output properties that has a value. What no such field covers stays as it is.
/// @param header itsTraceBytes bytes
void fillMappedFields(SegyFormat* segyFmt, char* header, const TraceInfo& trace);

/// The interval that the writers above want, so that whole microseconds come out as they are: their cut of the product
/// would lose one of many.
/// @param seconds rounded to the nearest microsecond @return milliseconds
float segyInterval(double seconds);

/// Builds a whole trace: a zeroed header with its fields filled (if the format has trace headers), then the samples, in
/// IBM floats or the format that the binary field SampFormat fixes.
/// @param segyTrace as many bytes as the answer says; without trace headers the samples stand at its start and
///        itsTraceBytes zero bytes behind them
/// @param samples samples in `inputData`; a negative count is 0
/// @return bytes of the trace: GetSegyBytes x samples + itsTraceBytes; 0, and nothing built, when an int cannot hold it
int BuildFieldSegyTrace(SegyFormat* segyFmt, const float* inputData, char* segyTrace, int samples, int seqNum,
                        int fieldFile, int channel, int traceType, float sampInt);

/// The same with a header that the caller has filled (itsTraceBytes bytes, copied) and this sample format code.
int BuildSegyTrace(SegyFormat* segyFmt, int sampleFmt, const char* header, const float* inputData, char* segyTrace,
                   int samples);
