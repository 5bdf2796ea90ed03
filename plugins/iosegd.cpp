/// SEG D field files on disk and on tapes, into a dataset or into SEG Y.
#include <memory>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "plugins/ownblock.h"
#include "plugins/segd/input_dlg.h"
#include "quarlo/tapelib/frame/reformatloop.h"
#include "quarlo/tapelib/frame/segdsource.h"
#include "quarlo/tapelib/frame/segdtapesource.h"

namespace {

std::unique_ptr<ReformatRun> theRun;

int openFiles(ProcessRecord* record, const KyrSegdInput& how) {
  char path[4096];
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) {
    kyrSay(record, "  *** There is no input file.");
    return 1;
  }
  auto source = std::make_unique<SegdSource>(record, how);
  return source->open(path) != 0 ? 1 : RegisterSource(record, 0, std::move(source));
}

/// @param input of a run, which is told what the tape announces; null for none
int openTape(ProcessRecord* record, const KyrSegdInput& how, ReformatInput* input) {
  auto source = std::make_unique<SegdTapeSource>(record, how);
  if (source->open() != 0) return 1;
  if (input != nullptr) {
    announceTape(how.tape, input);
    input->tapeFiles = [tape = source.get()] { return tape->files(); };
  }
  return RegisterSource(record, 0, std::move(source));
}

int openSource(ProcessRecord* record, const KyrSegdInput& how, ReformatInput* input) {
  return kyrIsTape(record, KYR_INPUT) == 1 ? openTape(record, how, input) : openFiles(record, how);
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, "SEG D");
  *uniqueId = KYR_ID_SEGD;
}

void AllocInputMemory(int* size) { *size = sizeof(KyrSegdInput); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  beginBlock<KyrSegdInput>(params, KYR_SEGD_INPUT)->tape.records = KYR_MOST_RECORDS;
  *paramDlg = 1;
  *disk = 1;
  *tape = 1;
}

void PostInputDialog(int* params) { editSegdInput(reinterpret_cast<KyrSegdInput*>(params)); }

int TOpenSource(ProcessRecord* record, int* inputParams) {
  return openSource(record, *reinterpret_cast<const KyrSegdInput*>(inputParams), nullptr);
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  ReformatInput input;
  const int opened = openSource(record, *reinterpret_cast<const KyrSegdInput*>(inputParams), &input);
  if (opened != 0) return opened;
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
