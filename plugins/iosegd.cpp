/// SEG D field files on disk, into a dataset or into SEG Y.
#include <memory>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "plugins/ownblock.h"
#include "plugins/segd/input_dlg.h"
#include "quarlo/tapelib/frame/reformatloop.h"
#include "quarlo/tapelib/frame/segdsource.h"

namespace {

std::unique_ptr<ReformatRun> theRun;

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, "SEG D");
  *uniqueId = KYR_ID_SEGD;
}

void AllocInputMemory(int* size) { *size = sizeof(KyrSegdInput); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  beginBlock<KyrSegdInput>(params, KYR_SEGD_INPUT);
  *paramDlg = 1;
  *disk = 1;
  *tape = 0;
}

void PostInputDialog(int* params) { editSegdInput(reinterpret_cast<KyrSegdInput*>(params)); }

int TOpenSource(ProcessRecord* record, int* inputParams) {
  char path[4096];
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) {
    kyrSay(record, "  *** There is no input file.");
    return 1;
  }
  auto source = std::make_unique<SegdSource>(record, *reinterpret_cast<const KyrSegdInput*>(inputParams));
  if (source->open(path) != 0) return 1;
  return RegisterSource(record, 0, std::move(source));
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  if (const int result = TOpenSource(record, inputParams); result != 0) return result;
  ReformatInput input;
  SetNumberOfInputs(record, 1);
  if (const int result = NewInputFile(&input.link, record, "", 0, kAnySeismicType); result != kyrOk) return result;
  SourceFormat format;
  GetSourceFormat(record, input.link, &format);
  input.told = format.description;
  theRun = std::make_unique<ReformatRun>(record, outputParams, std::move(input));
  return theRun->begin();
}

int TMainPhase(ProcessRecord* /*record*/) { return theRun ? theRun->work() : 1; }

int TFinalPhase(ProcessRecord* /*record*/) { return theRun ? theRun->end() : 1; }
