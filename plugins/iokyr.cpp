/// The suite's datasets as an output format. The module that reads writes the dataset, through libkyr: this one stands
/// for the choice and has no parameters. As an input it has no phases, and needs no source of its own.
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, KYR_NAME_DATASET);
  *uniqueId = KYR_ID_DATASET;
}

void GetOutputDefaultParameters(int* /*params*/, int* paramDlg, int* disk, int* tape) {
  *paramDlg = 0;
  *disk = 1;
  *tape = 0;
}

int TOpenSource(ProcessRecord* /*record*/, int* /*inputParams*/) { return 0; }
