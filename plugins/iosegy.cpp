/// SEG Y. As output format it holds the choices; the module that reads writes it, through the run of all reformats.
#include "plugins/kyrmodule.h"
#include "plugins/ownblock.h"
#include "plugins/segy/output_dlg.h"

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, KYR_NAME_SEGY);
  *uniqueId = KYR_ID_SEGY;
}

void AllocOutputMemory(int* size) { *size = sizeof(KyrSegyOutput); }

void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  auto* const how = beginBlock<KyrSegyOutput>(params, KYR_SEGY_OUTPUT);
  how->sampleFormat = 5;
  how->deadTraces = 1;
  *paramDlg = 1;
  *disk = 1;
  *tape = 1;
}

void PostOutputDialog(int* params) {
  const auto* const record = reinterpret_cast<const KyrSegyOutputRecord*>(params);
  editSegyOutput(reinterpret_cast<KyrSegyOutput*>(record->outputParams));
}
