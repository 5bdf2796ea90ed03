#include "quarlo/index/indx_dlg.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "libkyr/nullcheck.h"
#include "libkyr/process.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "quarlo/common/modulechoice.h"
#include "quarlo/common/unitdialog.h"
#include "quarlo/index/indexjob.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

/// What the dialog has for as long as it is up, and a run or a parameter dialog for as long as it lasts.
struct FileScan {
  ProcessRecordPtr record;
  ModuleChoice input;
};

std::shared_ptr<FileScan> current;  // null while there are no modules to work with
UnitStruct* ioUnit = nullptr;
FILE_SPEC tableFile{};
bool wantsTable = false;

UnitStruct& input() { return *ioUnit; }

bool canBeIndexed(const DllList& module) { return module.uniqueId == KYR_ID_SEGY || module.uniqueId == KYR_ID_DATASET; }

// ---- units ------------------------------------------------------------------------------------------------------

bool inputIsChosen() { return current && input().state == 1 && input().type == UT_DISK; }

bool isReady() { return inputIsChosen() && (!wantsTable || tableFile.name[0] != '\0'); }

bool inputIsTape() { return input().state == 1 && input().type == UT_TAPE; }

std::string tableLabel() { return tableFile.name[0] != '\0' ? pathOf(tableFile) : "No file chosen"; }

void showState(WINDOW dialog, COPY_STATE state) {
  if (current) current->input.showFlags();
  setIndxState(dialog, state, inputIsChosen() ? pathOf(input().fs).c_str() : "No input chosen");
  setControlText(dialog, FS_HINT, inputIsTape() ? "The input is a tape: only disk files can be scanned." : "");
}

int closeInput() {
  const int result = closeUnit(ioUnit, 0);
  input().name[0] = '\0';
  return result;
}

void closeFile() {
  if (input().type == UT_DISK) closeInput();
}

bool openInputFile(const FILE_SPEC& file) {
  closeInput();
  if (openDiskUnit(&input(), file, "rb")) return true;
  xvt_dm_post_error("Error opening file %s", file.name);
  return false;
}

/// The file stays chosen, at its start.
int endRun() { return input().type != UT_DISK || openInputFile(FILE_SPEC(input().fs)) ? 0 : -1; }

UnitDialog theDialog({.status = FS_STATUS,
                      .closeButton = FS_CLOSE,
                      .ready = isReady,
                      .showState = showState,
                      .endUnits = endRun,
                      .closeUnits = closeFile});

// ---- choosing ---------------------------------------------------------------------------------------------------

void chooseInput(WINDOW dialog) {
  FILE_SPEC file{};
  const bool isDataset = current->input.module().uniqueId == KYR_ID_DATASET;
  if (!chooseFileToOpen(&file, isDataset ? "kyr" : "*", "Open Input Disk File")) return;
  openInputFile(file);
  theDialog.showChange(dialog);
}

void editParameters(WINDOW dialog) {
  const auto held = current;
  KyrSegyInputRecord record = {held->input.block(), KYR_ID_DATASET};
  const bool isSegy = held->input.module().uniqueId == KYR_ID_SEGY;
  held->input.postDialog(isSegy ? reinterpret_cast<int*>(&record) : held->input.block());
  theDialog.showChange(dialog);
}

/// Formats that cannot be indexed are in the list, for the user to see that they are known.
void chooseFormat(WINDOW dialog) {
  const WINDOW list = xvt_win_get_ctl(dialog, FS_FORMAT);
  const int before = current->input.row();
  const int row = theDialog.refuses(dialog) ? -1 : xvt_list_get_selected(list);
  if (row < 0 || row == before) return xvt_list_set_selected(list, before, true);
  current->input.choose(row);
  if (const DllList& module = current->input.module(); !canBeIndexed(module)) {
    const std::string name = module.menuName;
    current->input.choose(before);
    xvt_list_set_selected(list, before, true);
    tellUser(formatText("%s files cannot be indexed: SEG Y files and datasets can.", name.c_str()).c_str());
  }
  theDialog.showChange(dialog);
}

void toggleTable(WINDOW dialog) {
  wantsTable = !wantsTable;
  checkControl(dialog, FS_TABLE, wantsTable);
  theDialog.showChange(dialog);
}

void chooseTable(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFileToSave(&file, "csv", "Write Trace Table")) return;
  if (isOpenFile(input(), file))
    return xvt_dm_post_error("This file is already being used for input. Choose another file name.");
  tableFile = file;
  theDialog.showChange(dialog);
}

// ---- the run ----------------------------------------------------------------------------------------------------

/// A table is chosen for one run: the next would write over it.
int runScan(WINDOW dialog, const FileScan& chosen) {
  const DllList& module = chosen.input.module();
  indexRequest = {module.name, wantsTable ? pathOf(std::exchange(tableFile, {})) : ""};
  chosen.record->dialogWindow = dialog;
  const auto index = module.uniqueId == KYR_ID_DATASET ? fileIndexKYR : fileIndexSEGY;
  return index(chosen.record.get(), chosen.input.block()) == 0 ? JOB_OK : JOB_FAILED;
}

void run(WINDOW dialog) {
  if (!isReady() || !openInputFile(FILE_SPEC(input().fs))) return theDialog.showChange(dialog);
  theDialog.start(dialog, [dialog, held = current](const int& /*stopped*/) { return runScan(dialog, *held); });
}

// ---- events -----------------------------------------------------------------------------------------------------

constexpr ControlAction kActions[] = {
    {FS_RUN, run},           {FS_INPUT, chooseInput},      {FS_PARAMETERS, editParameters},
    {FS_TABLE, toggleTable}, {FS_TABLE_FILE, chooseTable},
};

void create(WINDOW dialog) {
  ioUnit = getDevPtr();
  tableFile = {};
  wantsTable = false;
  DllList* rows = nullptr;
  ProcessRecord* record = nullptr;
  int* block = nullptr;
  const int row = initParms(&rows, &record, &block, dialog);
  current.reset();
  if (rows != nullptr)
    current.reset(new FileScan{ProcessRecordPtr(record), {kInputCalls, ModuleRows(rows), row, block}});
  theDialog.open(dialog);
}

void control(WINDOW dialog, const EVENT& event) {
  if (event.ctl.what == CTL_SELECT && event.ctl.id == FS_FORMAT && current)
    chooseFormat(dialog);
  else if (theDialog.admits(dialog, event) && current)
    runAction(kActions, dialog, event);
}

}  // namespace

int initParms(DllList** theList, ProcessRecord** procRecord, int** inputFmt, WINDOW theWindow) {
  *theList = nullptr;
  DllList* found = nullptr;
  const int count = findDlls(&found);
  ModuleRows rows(found);
  if (count == 0) return refuseSetUp("No valid shared objects found in lib directory.");
  const int segy = rowNamed(rows.get(), KYR_NAME_SEGY);
  const auto* const first = std::find_if(rows.get() + std::max(segy, 0), rows.get() + count, canBeIndexed);
  if (first == rows.get() + count) return refuseSetUp("No format module is there that reads SEG Y or datasets.");
  const int row = static_cast<int>(first - rows.get());
  *procRecord = NewProcessRecord();
  if (!NullCheck(*procRecord, "procRecord")) return 0;
  beginBlock(kInputCalls, rows[row].name, inputFmt);
  initLists(theWindow, rows.get(), count, row);
  *theList = rows.release();
  return row;
}

void initLists(WINDOW theWindow, const DllList* inputDllList, int numInTypes, int theInputDefault) {
  fillList(theWindow, FS_FORMAT, namesOf(inputDllList, numInTypes), theInputDefault);
}

void setIndxState(WINDOW theWindow, int newState, const char* inputName) {
  const bool idle = newState != COPY_RUNNING;
  enableControls(theWindow, {FS_CLOSE, FS_FORMAT, FS_TABLE}, idle);
  enableControl(theWindow, FS_INPUT, idle && current != nullptr);
  enableControl(theWindow, FS_PARAMETERS, idle && itDoesInputParm != 0);
  enableControl(theWindow, FS_TABLE_FILE, idle && wantsTable);
  enableControl(theWindow, FS_RUN, newState == COPY_READY);
  setControlText(theWindow, FS_INPUT_NAME, inputName);
  setControlText(theWindow, FS_TABLE_NAME, wantsTable ? tableLabel().c_str() : "");
}

long FileIndexDialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent,
                          {.create = create, .control = control, .destroy = [](WINDOW) { current.reset(); }});
}
