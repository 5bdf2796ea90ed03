/// The record of one processing job: the datasets that it has open, its console, its device unit, its dialog.
///
/// A zero-filled record is a valid one with nothing open. What the library hangs on it is freed by FreeProcessRecord.
#pragma once

#include <memory>

#include "libkyr/console.h"

struct UnitStruct;   // the device layer's; handed through
struct KyrDatasets;  // the library's own: the links of a record

struct ProcessRecord {
  long dialogWindow;                      ///< the dialog that runs the job; 0 for none
  int diskFileOutputType;                 ///< the chosen output format's identifier
  void (*consoleLine)(const char* line);  ///< where the job's console lines go; null: the default console
  UnitStruct* deviceUnit;                 ///< the unit pair of a job on devices; null for none
  KyrDatasets* datasets;                  ///< open inputs and outputs; null before the first
};

/// A new zero-filled record; null when there is no memory. FreeProcessRecord takes it back.
ProcessRecord* NewProcessRecord();

/// One line to the record's console, or to the default one.
void ProcessConsole(const ProcessRecord* procRecord, const char* line);

/// Remembers the unit array for a module's input and output.
void SetDevUnit(ProcessRecord* procRecord, UnitStruct* unit);
UnitStruct* GetDevUnit(const ProcessRecord* procRecord);

/// Closes what a record has open (as CloseFile does) and frees it; the record came from NewProcessRecord. Null is
/// nothing.
void FreeProcessRecord(ProcessRecord* procRecord);

struct ProcessRecordFreer {
  void operator()(ProcessRecord* procRecord) const { FreeProcessRecord(procRecord); }
};
using ProcessRecordPtr = std::unique_ptr<ProcessRecord, ProcessRecordFreer>;
