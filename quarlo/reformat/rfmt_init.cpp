// What the reformat dialog begins with: the modules, the first choices, their blocks.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "libkyr/nullcheck.h"
#include "libkyr/process.h"
#include "plugins/kyrmodule.h"
#include "quarlo/common/modulechoice.h"
#include "quarlo/reformat/rfmt_dlg.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "resources/ids.h"

namespace {

/// The modules that can be written, in the order of the list; null when there are none.
ModuleRows outputRows(const DllList* rows) {
  std::array<int, 2> places = {rowNamed(rows, KYR_NAME_SEGY), rowNamed(rows, KYR_NAME_DATASET)};
  std::ranges::sort(places);
  ModuleRows outputs(static_cast<DllList*>(std::calloc(places.size() + 1, sizeof(DllList))));
  int count = 0;
  for (const int place : places)
    if (place >= 0 && outputs) outputs[count++] = rows[place];
  if (count == 0) outputs.reset();
  return outputs;
}

}  // namespace

int initParms(DllList** theList, DllList** outputList, ProcessRecord** procRecord, int** inputFmt, int** outputFmt,
              int* outputDataType, WINDOW theWindow) {
  *theList = *outputList = nullptr;
  itDoesInputParm = itInputsDisk = itInputsTape = itDoesOutputParm = itOutputsDisk = itOutputsTape = 0;
  DllList* found = nullptr;
  const int count = findDlls(&found);
  ModuleRows inputs(found);
  if (count == 0) return refuseSetUp("No valid shared objects found in lib directory.");
  ModuleRows outputs = outputRows(inputs.get());
  if (!outputs) return refuseSetUp("No valid output shared objects have been found.");
  const int inputRow = std::max(rowNamed(inputs.get(), KYR_NAME_SEGY), 0);
  *outputDataType = std::max(rowNamed(outputs.get(), KYR_NAME_DATASET), 0);
  *procRecord = NewProcessRecord();
  if (!NullCheck(*procRecord, "procRecord")) return 0;
  beginBlock(kInputCalls, inputs[inputRow].name, inputFmt);
  beginBlock(kOutputCalls, outputs[*outputDataType].name, outputFmt);
  initLists(theWindow, inputs.get(), count, inputRow, outputs.get(), countRows(outputs.get()), *outputDataType);
  *theList = inputs.release();
  *outputList = outputs.release();
  return inputRow;
}

void initLists(WINDOW theWindow, const DllList* inputDllList, int numInTypes, int theInputDefault,
               const DllList* outputDllList, int numOutTypes, int theOutputDefault) {
  fillList(theWindow, RF_INPUT_FORMAT, namesOf(inputDllList, numInTypes), theInputDefault);
  fillList(theWindow, RF_OUTPUT_FORMAT, namesOf(outputDllList, numOutTypes), theOutputDefault);
}
