/// Datasets ("*.kyr"): records x traces x samples of floats with a header for every trace, opened as inputs and outputs
/// of a process record. File format: docs/format-kyr.md; guide with examples: docs/libkyr.md.
///
/// Records and traces are numbered from 1. All calls answer a KyrResult, and none throws. What a user has to know (a
/// dataset that was cut off, a trace that is lost, a disk that is full) also goes as a line to the record's console.
#pragma once

#include "libkyr/source.h"

// ---- opening and closing ----------------------------------------------------------------------------------------

/// Says how many inputs (outputs) the record will have open at the same time. Open ones stay open.
int SetNumberOfInputs(ProcessRecord* procRecord, int count);
int SetNumberOfOutputs(ProcessRecord* procRecord, int count);

/// Opens a dataset for reading. A dataset that was cut off by a crash opens with a warning on the console and with the
/// counts that its file still holds.
/// @param link receives the link, or the failure: kyrWrongVersion, kyrNotRadar, kyrNotTwoD, kyrNotSeismic,
///             kyrDiskError, kyrOtherType, kyrBadCall, kyrNoMemory
/// @param inputNumber which of the inputs it is, from 0; what was open as that is closed
/// @param accepted the SeisType asked for; kAnySeismicType takes whatever is seismic
/// @return 0 or the failure
int NewInputFile(Link* link, ProcessRecord* procRecord, const char* fullName, int inputNumber, int accepted);

/// Announces a dataset to write; the file is begun by EndInit, after its counts have been set as dataset properties.
/// A file that is there is kept until then.
/// @param outputNumber which of the outputs it is, from 0; what was open as that is closed
/// @param recordsPerFile records in one file of the dataset (GetRecordsPerFile); 0 for all
/// @param tracesPerRecord trace places of a record; dataset property 6 says it anew
/// @return 0 or the failure, also in the link: kyrDiskError, kyrInUse, kyrBadCall, kyrNoMemory
int NewOutputSeismicFile(Link* link, ProcessRecord* procRecord, const char* fullName, int outputNumber, int type,
                         int recordsPerFile, int tracesPerRecord);

/// Ends the preparations: creates the files of the outputs. From here on records, traces per record can only shrink,
/// samples are fixed, and traces can be written. @return 0 or the first failure, already on the console
int EndInit(ProcessRecord* procRecord);

/// Closes a link. An output is brought to the disk and marked as properly closed, unless a write failed. The link is
/// closed whatever comes back. @return 0, or kyrDiskError when not all that was written is on the disk
int CloseFile(ProcessRecord* procRecord, Link link);

/// Closes an output that its job could not finish: what was written is kept and brought to the disk, with the counts
/// that it has now, but it is not marked as properly closed. An input is closed as by CloseFile. @return as CloseFile
int CloseUnfinished(ProcessRecord* procRecord, Link link);

/// Closes all links of a record, as CloseFile does. @return 0 or the first failure
int CloseAllFiles(ProcessRecord* procRecord);

/// How many records belong into one file, so that no file grows beyond 1 TiB; at least 1. A trace that is larger all by
/// itself, or senseless counts, give 1.
int GetRecordsPerFile(int records, int tracesPerRecord, int samples);

// ---- a dataset's properties ---------------------------------------------------------------------------------------

/// Fetches (stores) a dataset property; arguments as for GetTraceProperty.
int GetDatasetProperty(const ProcessRecord* procRecord, Link link, int property, int type, int units, void* value);
int SetDatasetProperty(ProcessRecord* procRecord, Link link, int property, int type, int units, const void* value);

/// The type of a dataset as it was written; 0 when the link is not valid.
int GetInSeismicType(const ProcessRecord* procRecord, Link link);

/// Gives an output the properties of another dataset: all but the counts and the ranges, which belong to the traces.
int CopyBinaryHeader(ProcessRecord* procRecord, Link from, Link to);

/// Whether `path` leads to a file that a link reads or writes: no other output may go there.
bool UsesFile(const ProcessRecord* procRecord, Link link, const char* path);

/// How the traces of a link stand in their file. @return 0, or kyrBadCall for a link that is not valid
int GetSourceFormat(const ProcessRecord* procRecord, Link link, SourceFormat* format);

/// A copy of the organisation record. Its counts are those that GetDatasetProperty tells.
int GetSeisOrg(const ProcessRecord* procRecord, Link link, GeneralSeisDataOrg* org);

// ---- traces -------------------------------------------------------------------------------------------------------

/// Reads a trace's header; TraceGet also its samples (property 8 tells how many).
///
/// A trace that was never written has a header of zeros with the kill flag killNeverWritten, and samples of zeros. One
/// that cannot be given (kyrNoSuchTrace, kyrTraceLost, kyrDiskError) is answered as dead too, killUnreadable: a caller
/// that overlooks the result never takes it for data.
int HeaderGet(ProcessRecord* procRecord, Link link, int record, int trace, TraceInfo* header);
int TraceGet(ProcessRecord* procRecord, Link link, int record, int trace, float* samples, TraceInfo* header);

/// The first place of a record, at `trace` or behind it, that may have a trace; 0 when there is none any more. From
/// tapes the places that nobody wrote are known by it without being read.
int TracePlaceFrom(const ProcessRecord* procRecord, Link link, int record, int trace);

/// Byte at which a trace begins in its file; -1 where there is none.
std::int64_t GetTracePosition(const ProcessRecord* procRecord, Link link, int record, int trace);

/// Writes a trace, in any order; a trace that is there is replaced. After a failed write nothing more is written, and
/// the dataset will not be marked as closed.
int TracePut(ProcessRecord* procRecord, Link link, int record, int trace, const float* samples,
             const TraceInfo* header);

/// Hands the traces that an output has taken to its files. @return how many of all it took the disk did not keep; 0
/// when all are there, and for a link that is no output
std::int64_t SettleTraces(ProcessRecord* procRecord, Link link);
