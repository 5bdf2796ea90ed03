// A module that is called what its file is called, "io0-SEG Y.so", and tells on the console what is done with it. Its
// parameter dialog sets its block to MODULE_ANSWER, which says how its runs end.
#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "quarlo/tapelib/console.h"

namespace {

enum Answer : int { kWorks, kMinusTwo, kThrows };

Answer chosen = kWorks;
int total = 0;

std::string ownFile() {
  Dl_info info{};
  dladdr(&chosen, &info);
  const std::string path = info.dli_fname;
  return path.substr(path.rfind('/') + 3);
}
int numberIn(const char* text) { return text != nullptr ? static_cast<int>(std::strtol(text, nullptr, 10)) : 0; }
int ownId() { return numberIn(ownFile().c_str()); }
void setTo(int* block) { block[0] = numberIn(std::getenv("MODULE_ANSWER")); }

int copy(ProcessRecord* record) {
  char bytes[1000];
  int count = 0;
  while (kyrGoOn() != 0 && (count = kyrRead(record, bytes, sizeof bytes)) > 0) {
    total += count;
    if (record->diskFileOutputType != KYR_CHECK_RUN && kyrWrite(record, bytes, count) != count) return 1;
  }
  return count == KYR_FAILED ? 1 : 0;
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  const std::string file = ownFile();
  const std::size_t name = file.find('-') + 1;
  copyText(theName, KYR_NAME_SIZE, file.substr(name, file.size() - name - 3));
  *uniqueId = ownId();
}
void AllocInputMemory(int* size) { *size = sizeof(int); }
void AllocOutputMemory(int* size) { *size = sizeof(int); }
void GetInputDefaultParameters(int* /*params*/, int* paramDlg, int* disk, int* tape) {
  *paramDlg = *disk = 1;
  *tape = ownId() == KYR_ID_DATASET ? 0 : 1;
}
void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  GetInputDefaultParameters(params, paramDlg, disk, tape);
}
void DestroyInputMemory(int* params) { console_printf("%d: input %d destroyed", ownId(), params[0]); }
void DestroyOutputMemory(int* params) { console_printf("%d: output %d destroyed", ownId(), params[0]); }

void PostInputDialog(int* params) {
  if (ownId() != KYR_ID_SEGY) return setTo(params);
  const auto* record = reinterpret_cast<const KyrSegyInputRecord*>(params);
  setTo(record->inputParams);
  console_printf("input dialog of 0, output %d", record->outputId);
}
void PostOutputDialog(int* params) {
  if (ownId() != KYR_ID_SEGY) return setTo(params);
  const auto* record = reinterpret_cast<const KyrSegyOutputRecord*>(params);
  console_printf("output dialog of 0, input %d: %d %d", record->inputId, record->inputParams[0],
                 record->outputParams[0]);
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* /*outputParams*/) {
  chosen = static_cast<Answer>(inputParams[0]);
  total = 0;
  if (chosen == kMinusTwo || kyrOpen(record, KYR_INPUT) != 0) return -2;
  return record->diskFileOutputType == KYR_CHECK_RUN ? 0 : kyrOpen(record, KYR_OUTPUT);
}
int TMainPhase(ProcessRecord* record) {
  if (chosen == kThrows) throw std::runtime_error("no more");
  return copy(record);
}
int TFinalPhase(ProcessRecord* record) {
  kyrSay(record, (std::to_string(total) + " bytes for " + std::to_string(record->diskFileOutputType)).c_str());
  return 0;
}
