/// The suite's datasets: as input, copied record by record into whatever output was chosen; as output format a choice
/// without parameters, for the module that reads writes it. The library opens datasets by their path: no source is
/// needed.
#include <memory>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "plugins/kyr/input_dlg.h"
#include "plugins/kyrmodule.h"
#include "plugins/ownblock.h"
#include "quarlo/tapelib/frame/reformatloop.h"

namespace {

std::unique_ptr<ReformatRun> theRun;

void onDisk(int* disk, int* tape) {
  *disk = 1;
  *tape = 0;
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, KYR_NAME_DATASET);
  *uniqueId = KYR_ID_DATASET;
}

void AllocInputMemory(int* size) { *size = sizeof(KyrDatasetInput); }
void AllocOutputMemory(int* size) { *size = sizeof(KyrDatasetOutput); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  beginBlock<KyrDatasetInput>(params, KYR_DATASET_INPUT)->firstRecord = 1;
  *paramDlg = 1;
  onDisk(disk, tape);
}

void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  beginBlock<KyrDatasetOutput>(params, KYR_DATASET_OUTPUT);
  *paramDlg = 0;
  onDisk(disk, tape);
}

void PostInputDialog(int* params) { editDatasetInput(reinterpret_cast<KyrDatasetInput*>(params)); }

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  const auto* const how = reinterpret_cast<const KyrDatasetInput*>(inputParams);
  char path[4096];
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) {
    kyrSay(record, "  *** There is no input file.");
    return 1;
  }
  ReformatInput input;
  input.firstRecord = how->firstRecord;
  input.lastRecord = how->lastRecord;
  input.told = "DATASET";
  SetNumberOfInputs(record, 1);
  if (const int result = NewInputFile(&input.link, record, path, 0, kAnySeismicType); result != kyrOk) {
    kyrSay(record, formatText("  *** Error opening the dataset %s (%d).", path, result).c_str());
    return 1;
  }
  theRun = std::make_unique<ReformatRun>(record, outputParams, std::move(input));
  return theRun->begin();
}

int TMainPhase(ProcessRecord* /*record*/) { return theRun ? theRun->work() : 1; }

int TFinalPhase(ProcessRecord* /*record*/) { return theRun ? theRun->end() : 1; }

int TOpenSource(ProcessRecord* /*record*/, int* /*inputParams*/) { return 0; }
