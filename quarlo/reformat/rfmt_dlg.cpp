#include "quarlo/reformat/rfmt_dlg.h"

#include <memory>
#include <string>

#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "plugins/kyrmodule.h"
#include "quarlo/common/bot_dlg.h"
#include "quarlo/common/modulechoice.h"
#include "quarlo/common/unitdialog.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/errhandl.h"
#include "quarlo/tapelib/dialogs/tsel2dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

constexpr const char* kReadErrors = "Otherwise a dead trace goes out, where the output keeps those.";
constexpr const char* kFromDefaults = "%s: the parameters start from the defaults again.";

/// What the dialog has for as long as it is up, and a run or a parameter dialog for as long as it lasts.
struct Reformat {
  ProcessRecordPtr record;
  ModuleChoice input;
  ModuleChoice output;
};

std::shared_ptr<Reformat> current;  // null while there are no modules to work with
UnitStruct* ioUnit = nullptr;
bool overwriteIsAllowed = false;  // the user was asked when the disk output was chosen

UnitStruct& input() { return ioUnit[0]; }
UnitStruct& output() { return ioUnit[1]; }

// ---- units ------------------------------------------------------------------------------------------------------

bool inputIsChosen() { return current && input().state == 1 && current->input.does(input().type); }

/// A disk output is a name until the run begins: the module makes the file in its own way.
bool diskOutputIsNamed() { return output().type == UT_DISK && output().state == 0 && output().fs.name[0] != '\0'; }

bool outputIsChosen() {
  const bool there = output().type == UT_DISK ? diskOutputIsNamed() : output().state == 1;
  return current && there && current->output.does(output().type);
}

bool isReady() { return inputIsChosen() && outputIsChosen(); }

bool canCheckInput() {
  if (!inputIsChosen()) return false;
  const int module = current->input.module().uniqueId;
  return module == KYR_ID_SEGY || module == KYR_ID_SEGD;
}

std::string inputLabel() {
  if (!inputIsChosen()) return "No input chosen";
  return choiceName(input());
}

std::string outputLabel() {
  if (!outputIsChosen()) return "No output chosen";
  return output().type == UT_DISK ? choiceName(output()) : outputTapesName(ioUnit);
}

void showState(WINDOW dialog, COPY_STATE state) {
  if (current) {
    current->input.showFlags();
    current->output.showFlags();
  }
  setRfmtState(dialog, state, inputLabel().c_str(), outputLabel().c_str());
  enableControl(dialog, RF_CHECK, state != COPY_RUNNING && canCheckInput());
}

/// Closes a tape or a file and forgets its name, also that of a file that was only named.
int closeInput() {
  const int result = closeUnit(ioUnit, 0);
  input().name[0] = '\0';
  return result;
}

int closeOutput() {
  const int result = closeOutputs(ioUnit);
  output().name[0] = '\0';
  return result;
}

void closeBoth() {
  closeInput();
  closeOutput();
}

/// Opens the chosen input file anew: whoever read it, it is at its start then. @return false after a box
bool openInputFile(const FILE_SPEC& file) {
  closeInput();
  if (openDiskUnit(&input(), file, "rb")) return true;
  xvt_dm_post_error("Error opening file %s", file.name);
  return false;
}

// ---- the end of a run -------------------------------------------------------------------------------------------

/// A tape that was read stays where it is, for the next run.
int endRun() {
  if (input().type == UT_DISK) closeInput();
  const bool rewinds = output().type == UT_TAPE && !ioUnit->outputNoRewind;
  const int atRewind = rewinds ? rewindOutputs(ioUnit) : 0;
  const int atClose = closeOutput();
  return atRewind != 0 ? atRewind : atClose;
}

/// The tape is at its beginning, open, for the run that follows. One that went out with its last block cannot be.
int rewindCheckedTape() {
  if (input().state != 1 && !input().unloadAtEot) openChosenDrive(ioUnit, 0);
  if (input().state != 1) return 0;
  if (input().inputNoRewind) console_out("The input tape is rewound behind its check, whatever its options say.");
  return tlv_rewind(ioUnit, 0);
}

FILE_SPEC checkedFile;

int endCheck() {
  if (input().type == UT_TAPE) return rewindCheckedTape();
  return openInputFile(checkedFile) ? 0 : -1;
}

UnitDialog theDialog({.status = RF_STATUS,
                      .closeButton = RF_CLOSE,
                      .ready = isReady,
                      .showState = showState,
                      .endUnits = endRun,
                      .closeUnits = closeBoth});

// ---- choosing units ---------------------------------------------------------------------------------------------

void chooseInputTape(WINDOW dialog) { theDialog.chooseInputTape(dialog, ioUnit); }

void chooseInputDisk(WINDOW dialog) {
  FILE_SPEC file{};
  const bool fromDataset = current->input.module().uniqueId == KYR_ID_DATASET;
  if (!chooseFileToOpen(&file, fromDataset ? "kyr" : "*", "Open Input Disk File")) return;
  if (diskOutputIsNamed() && isSameFile(output().fs, file))
    return xvt_dm_post_error("This file is already being used for output. Choose another file.");
  openInputFile(file);
  theDialog.showChange(dialog);
}

void chooseOutputTape(WINDOW dialog) {
  if (!theDialog.takes(dialog, chooseOutputDrives(ioUnit))) return;
  closeOutput();
  openChosenOutputs(ioUnit);
  theDialog.showChange(dialog);
}

const char* outputExtension() {
  const int format = current->output.module().uniqueId;
  return format == KYR_ID_SEGY ? "sgy" : format == KYR_ID_DATASET ? "kyr" : "*";
}

bool outputIsInput(const FILE_SPEC& file) {
  if (!isOpenFile(input(), file)) return false;
  xvt_dm_post_error("This file name is already being used for input. Choose another file name.");
  return true;
}

bool isThere(const FILE_SPEC& file) { return xvt_fsys_get_file_size(pathOf(file).c_str()) >= 0; }

void chooseOutputDisk(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFileToSave(&file, outputExtension(), "Save dataset as:") || outputIsInput(file)) return;
  closeOutput();
  output().fs = file;
  output().type = UT_DISK;
  copyText(output().name, fieldText(file.name));
  overwriteIsAllowed = isThere(file);
  theDialog.showChange(dialog);
}

// ---- choosing formats -------------------------------------------------------------------------------------------

/// A row that was selected in a list; -1 when it is none or the one that is chosen already.
int newRow(WINDOW dialog, int control, const ModuleChoice& side) {
  const WINDOW list = xvt_win_get_ctl(dialog, control);
  if (theDialog.refuses(dialog)) {
    xvt_list_set_selected(list, side.row(), true);
    return -1;
  }
  const int row = xvt_list_get_selected(list);
  return row == side.row() ? -1 : row;
}

void chooseModule(WINDOW dialog, ModuleChoice* side, int row) {
  const std::string hint = formatText(kFromDefaults, side->module().menuName);
  const bool hadChanges = side->choose(row);
  setControlText(dialog, RF_HINT, hadChanges ? hint.c_str() : "");
}

void chooseInputFormat(WINDOW dialog) {
  const int row = newRow(dialog, RF_INPUT_FORMAT, current->input);
  if (row < 0) return;
  chooseModule(dialog, &current->input, row);
  if (input().state == 1 && !current->input.does(input().type)) closeInput();
  theDialog.showChange(dialog);
}

void chooseOutputFormat(WINDOW dialog) {
  const int row = newRow(dialog, RF_OUTPUT_FORMAT, current->output);
  if (row < 0) return;
  chooseModule(dialog, &current->output, row);
  // The extension of a name belongs to the format that it was chosen for.
  if (diskOutputIsNamed() || !outputIsChosen()) closeOutput();
  theDialog.showChange(dialog);
}

void showParametersSet(WINDOW dialog) {
  if (!xvt_vobj_is_valid(dialog)) return;
  setControlText(dialog, RF_HINT, "");
  theDialog.showChange(dialog);
}

void editInputParameters(WINDOW dialog) {
  const auto held = current;
  KyrSegyInputRecord record = {held->input.block(), held->output.module().uniqueId};
  const bool isSegy = held->input.module().uniqueId == KYR_ID_SEGY;
  held->input.postDialog(isSegy ? reinterpret_cast<int*>(&record) : held->input.block());
  showParametersSet(dialog);
}

void editOutputParameters(WINDOW dialog) {
  const auto held = current;
  KyrSegyOutputRecord record = {held->input.module().uniqueId, held->output.block(), held->input.block()};
  const bool isSegy = held->output.module().uniqueId == KYR_ID_SEGY;
  held->output.postDialog(isSegy ? reinterpret_cast<int*>(&record) : held->output.block());
  showParametersSet(dialog);
}

void chooseErrorOptions(WINDOW /*dialog*/) {
  if (!editErrorOptions(ioUnit, kReadErrors)) xvt_dm_post_error("Can't open dialog");
}

// ---- runs -------------------------------------------------------------------------------------------------------

/// A run on what is chosen. What the module has thrown, or left open, ends here.
int runModule(WINDOW dialog, const Reformat& chosen, int outType) {
  ProcessRecord* record = chosen.record.get();
  record->dialogWindow = dialog;
  int result = JOB_FAILED;
  runGuarded([&] {
    result = doReformat(record, chosen.input.module().name, chosen.input.block(), chosen.output.block(), outType);
  });
  if (CloseAllFiles(record) != 0) result = JOB_FAILED;
  return result == JOB_OK ? JOB_OK : JOB_FAILED;
}

bool writeClosingMarks() {
  if (output().type != UT_TAPE || tlv_weof(ioUnit, kAllOutputs, 2) == 0) return true;
  xvt_dm_post_error("Error writing double eof to output tape");
  return false;
}

int runReformat(WINDOW dialog, const Reformat& chosen) {
  const int result = runModule(dialog, chosen, chosen.output.module().uniqueId);
  return writeClosingMarks() ? result : JOB_FAILED;
}

/// Whether the output may be written where it was named; things may have changed since.
bool outputIsFree() {
  if (output().type != UT_DISK) return true;
  if (outputIsInput(output().fs)) return false;
  return overwriteIsAllowed || !isThere(output().fs) ||
         xvt_dm_post_confirm("Overwrite", "Cancel", "This file was not there when it was chosen. Overwrite it?\n%s",
                             pathOf(output().fs).c_str()) == RESP_DEFAULT;
}

bool inputIsAtHand() { return input().type != UT_DISK || openInputFile(FILE_SPEC(input().fs)); }

void start(WINDOW dialog) {
  if (isReady() && (!outputIsFree() || !inputIsAtHand())) return theDialog.showChange(dialog);
  theDialog.start(dialog, [dialog, held = current](const int& stopped) -> int {
    checkBOT(ioUnit);
    return stopped == 0 ? runReformat(dialog, *held) : JOB_NOT_BEGUN;
  });
}

void check(WINDOW dialog) {
  if (!canCheckInput() || !inputIsAtHand()) return theDialog.showChange(dialog);
  checkedFile = input().fs;
  int stopped = 0;
  const auto job = [dialog, &stopped, held = current]() -> int {
    checkInputBOT(ioUnit);
    return stopped == 0 ? runModule(dialog, *held, KYR_CHECK_RUN) : JOB_NOT_BEGUN;
  };
  theDialog.run(dialog, &stopped, job, endCheck);
}

// ---- events -----------------------------------------------------------------------------------------------------

constexpr ControlAction kActions[] = {
    {RF_RUN, start},
    {RF_CHECK, check},
    {RF_INPUT_PARAMETERS, editInputParameters},
    {RF_OUTPUT_PARAMETERS, editOutputParameters},
    {RF_INPUT_TAPE, chooseInputTape},
    {RF_INPUT_DISK, chooseInputDisk},
    {RF_OUTPUT_TAPE, chooseOutputTape},
    {RF_OUTPUT_DISK, chooseOutputDisk},
    {RF_ERRORS, chooseErrorOptions},
};

void create(WINDOW dialog) {
  ioUnit = getDevPtr();
  DllList* inputs = nullptr;
  DllList* outputs = nullptr;
  ProcessRecord* record = nullptr;
  int* inputBlock = nullptr;
  int* outputBlock = nullptr;
  int outputRow = 0;
  const int inputRow = initParms(&inputs, &outputs, &record, &inputBlock, &outputBlock, &outputRow, dialog);
  current.reset();
  if (outputs != nullptr)
    current.reset(new Reformat{ProcessRecordPtr(record),
                               {kInputCalls, ModuleRows(inputs), inputRow, inputBlock},
                               {kOutputCalls, ModuleRows(outputs), outputRow, outputBlock}});
  theDialog.open(dialog);
  enableControl(dialog, RF_CHECK, false);
}

void control(WINDOW dialog, const EVENT& event) {
  const bool selected = event.ctl.what == CTL_SELECT && current;
  if (selected && event.ctl.id == RF_INPUT_FORMAT)
    chooseInputFormat(dialog);
  else if (selected && event.ctl.id == RF_OUTPUT_FORMAT)
    chooseOutputFormat(dialog);
  else if (theDialog.admits(dialog, event) && current)
    runAction(kActions, dialog, event);
}

}  // namespace

void setRfmtState(WINDOW theWindow, int newState, const char* str1, const char* str2) {
  const bool idle = newState != COPY_RUNNING;
  enableControls(theWindow, {RF_CLOSE, RF_INPUT_FORMAT, RF_OUTPUT_FORMAT, RF_ERRORS}, idle);
  enableControl(theWindow, RF_RUN, newState == COPY_READY);
  if (!idle) enableControl(theWindow, RF_CHECK, false);
  const struct {
    int control;
    int flag;
  } ofModules[] = {{RF_INPUT_PARAMETERS, itDoesInputParm}, {RF_INPUT_TAPE, itInputsTape},
                   {RF_INPUT_DISK, itInputsDisk},          {RF_OUTPUT_PARAMETERS, itDoesOutputParm},
                   {RF_OUTPUT_TAPE, itOutputsTape},        {RF_OUTPUT_DISK, itOutputsDisk}};
  for (const auto& [button, flag] : ofModules) enableControl(theWindow, button, idle && flag != 0);
  if (!idle) return;
  setControlText(theWindow, RF_INPUT_NAME, str1);
  setControlText(theWindow, RF_OUTPUT_NAME, str2);
}

int doReformat(ProcessRecord* procRecord, const char* dllName, int* inputFmt, int* outputFmt, int outType) {
  procRecord->diskFileOutputType = outType;
  int result = 1;
  withModule(dllName, [&](ProcessingStep& step) {
    result = step.InitialPhase(procRecord, inputFmt, outputFmt);
    if (result == 0) result = step.MainPhase(procRecord);
    if (result == 0) result = step.FinalPhase(procRecord);
  });
  return result;
}

long ReformatDialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent,
                          {.create = create, .control = control, .destroy = [](WINDOW) { current.reset(); }});
}
