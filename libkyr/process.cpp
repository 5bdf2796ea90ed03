#include "libkyr/process.h"

#include <new>

#include "libkyr/datasets.h"

ProcessRecord* NewProcessRecord() { return new (std::nothrow) ProcessRecord{}; }

void ProcessConsole(const ProcessRecord* procRecord, const char* line) {
  auto* const own = procRecord != nullptr ? procRecord->consoleLine : nullptr;
  (own != nullptr ? own : DefaultConsole)(line);
}

void SetDevUnit(ProcessRecord* procRecord, UnitStruct* unit) {
  if (procRecord != nullptr) procRecord->deviceUnit = unit;
}

UnitStruct* GetDevUnit(const ProcessRecord* procRecord) {
  return procRecord != nullptr ? procRecord->deviceUnit : nullptr;
}

void FreeProcessRecord(ProcessRecord* procRecord) {
  if (procRecord == nullptr) return;
  CloseAllFiles(procRecord);
  delete procRecord;
}
