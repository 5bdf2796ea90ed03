// A module in C that has every entry: copies its input to its output, each byte changed by a parameter.
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "plugins/kyrmodule.h"

struct Parameters {
  int key;
  int calls;
};

static struct Parameters* chosen;
static long total;

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  strcpy(theName, "Good");
  *uniqueId = 77;
}

void AllocInputMemory(int* size) { *size = sizeof(struct Parameters); }
void AllocOutputMemory(int* size) { *size = 100000; }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  ((struct Parameters*)params)->key = 1;
  *paramDlg = *disk = *tape = 1;
}

void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  (void)params;
  (void)paramDlg;
  (void)tape;
  *disk = 1;
}

void PostInputDialog(int* params) { ((struct Parameters*)params)->calls += 1; }
void PostOutputDialog(int* params) { params[0] = -5; }
void DestroyInputMemory(int* params) { ((struct Parameters*)params)->calls += 100; }
void DestroyOutputMemory(int* params) { params[0] = -6; }

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  char line[600];
  char path[500];
  (void)outputParams;
  chosen = (struct Parameters*)inputParams;
  total = 0;
  kyrPath(record, KYR_INPUT, path, sizeof path);
  snprintf(line, sizeof line, "output type %d, tape %d, block limit %d, from \"%s\"", record->diskFileOutputType,
           kyrIsTape(record, KYR_INPUT), kyrBlockLimit(record), path);
  kyrSay(record, line);
  return kyrOpen(record, KYR_INPUT) != 0 ? 3 : kyrOpen(record, KYR_OUTPUT);
}

// One pass over a tape counts its items, the other copies them; marks at its end are the program's.
static int copy(ProcessRecord* record, int readOnly) {
  char bytes[1000];
  int count = 0;
  int items = 0;
  int marks = 0;
  while ((count = kyrRead(record, bytes, sizeof bytes)) != KYR_END) {
    if (count == KYR_FAILED || !kyrGoOn() || kyrProgress(record, ++items, 50) != 0) return 5;
    if (count == KYR_MARK) ++marks;
    if (count == KYR_MARK || readOnly) continue;
    for (int i = 0; i < count; ++i) bytes[i] = (char)(bytes[i] + chosen->key);
    if (kyrMark(record, marks) != 0 || kyrWrite(record, bytes, count) != count) return 4;
    marks = 0;
    total += count;
  }
  return 0;
}

int TMainPhase(ProcessRecord* record) {
  int result = copy(record, 1);
  if (result == 0) result = kyrRewind(record, KYR_INPUT);
  if (result == 0) result = copy(record, 0);
  while (result == 0 && kyrNextTape(record, KYR_INPUT) == 1) result = copy(record, 0);
  return result;
}

int TFinalPhase(ProcessRecord* record) {
  char line[100];
  snprintf(line, sizeof line, "%ld bytes", total);
  kyrSay(record, line);
  return 0;
}

// How a C compiler lays out the record.
KYR_MODULE_ENTRY void recordLayout(size_t* offsets);
void recordLayout(size_t* offsets) {
  offsets[0] = offsetof(struct ProcessRecord, dialogWindow);
  offsets[1] = offsetof(struct ProcessRecord, diskFileOutputType);
  offsets[2] = offsetof(struct ProcessRecord, consoleLine);
  offsets[3] = offsetof(struct ProcessRecord, deviceUnit);
  offsets[4] = offsetof(struct ProcessRecord, datasets);
  offsets[5] = sizeof(struct ProcessRecord);
}
