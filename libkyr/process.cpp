#include "libkyr/process.h"

#include <cstdio>
#include <new>

#include "libkyr/datasets.h"

namespace {

void (*defaultConsole)(const char* line) = nullptr;

}  // namespace

ProcessRecord* NewProcessRecord() { return new (std::nothrow) ProcessRecord{}; }

void SetDefaultConsole(void (*consoleLine)(const char* line)) { defaultConsole = consoleLine; }

void ProcessConsole(const ProcessRecord* procRecord, const char* line) {
  auto* const own = procRecord != nullptr ? procRecord->consoleLine : nullptr;
  if (own != nullptr)
    own(line);
  else if (defaultConsole != nullptr)
    defaultConsole(line);
  else
    std::fprintf(stderr, "%s\n", line);
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
