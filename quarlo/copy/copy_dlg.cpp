#include "quarlo/copy/copy_dlg.h"

#include <cerrno>

#include "libkyr/text.h"
#include "quarlo/common/bot_dlg.h"
#include "quarlo/common/unitdialog.h"
#include "quarlo/common/windows.h"
#include "quarlo/copy/unfmt_dlg.h"
#include "quarlo/copy/unfmtcpy.h"
#include "quarlo/segdcopy/segd_dlgs.h"
#include "quarlo/segdcopy/segdcopy.h"
#include "quarlo/segycopy/segy_dlgs.h"
#include "quarlo/segycopy/segycopy.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/errhandl.h"
#include "quarlo/tapelib/dialogs/tsel2dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/tpf.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/unitopen.h"
#include "resources/ids.h"

namespace {

/// Proposed for raw images, which nothing but their maker's knowledge tells apart.
constexpr const char* kRawExtension = "img";

int doImageCopy(UnitStruct* units) { return units->type == UT_TAPE ? doTapeCopy(units) : doDiskCopy(units); }

constexpr const char* kBadBlocksSkipped = "Otherwise a bad block is tried again five times, then skipped.";
constexpr const char* kBadBlocksFail =
    "Otherwise a bad block is tried again five times; the job ends if that is in vain.";

/// A format that can be copied; null functions belong to jobs that this build does not have.
struct Format {
  const char* name;
  const char* inputExtension;
  const char* outputExtension;
  int parameters;  // resource of the parameter dialog
  EVENT_HANDLER parametersHandler;
  int (*job)(UnitStruct* units);
  bool outputIsDirectory;
  const char* badBlocks;  // what happens to them unless the job stops at once
};

constexpr Format kFormats[] = {
    {"UNFORMATTED", "tpf", "tpf", DLG_UNFORMATTED, NoFmtParam_eh, doImageCopy, false, kBadBlocksSkipped},
    {"SEG Y", "", "sgy", DLG_SEGY, SegyCpy_eh, doSegyCopy, false, kBadBlocksSkipped},
    {"SEG D", "", "sgd", DLG_SEGD, SegdCpy_eh, doSegdCopy, true, kBadBlocksFail},
};
constexpr int kUnformatted = 1;

UnitStruct* ioUnit = nullptr;
int inFileType = kUnformatted;  // the chosen format's row plus one

const Format& format() { return kFormats[inFileType - 1]; }
UnitStruct& input() { return ioUnit[0]; }
UnitStruct& output() { return ioUnit[1]; }

// ---- what the dialog shows --------------------------------------------------------------------------------------

std::string inputLabel() { return input().state == 1 ? choiceName(input()) : "No input chosen"; }

std::string outputLabel() {
  if (output().state != 1) return "No output chosen";
  if (output().type == UT_TAPE) return outputTapesName(ioUnit);
  return format().outputIsDirectory ? output().name : choiceName(output());
}

bool isReady() { return input().state == 1 && output().state == 1; }

void showState(WINDOW dialog, COPY_STATE state) {
  setCopyState(dialog, state, inputLabel().c_str(), outputLabel().c_str(), input().isM4);
}

// ---- closing ----------------------------------------------------------------------------------------------------

int closeInput() { return closeUnit(ioUnit, 0); }

int closeOutput() { return closeOutputs(ioUnit); }

/// The ordinary end of every job's units. @return nonzero when an output reported an error at the last moment
int closeAfterJob() {
  if (input().type == UT_TAPE && input().state == 1 && !input().inputNoRewind) tlv_rewind(ioUnit, 0);
  closeInput();
  if (output().type == UT_TAPE && !ioUnit->outputNoRewind) rewindOutputs(ioUnit);
  return closeOutput();
}

void closeBoth() {
  closeInput();
  closeOutput();
}

UnitDialog theDialog({.status = CP_STATUS,
                      .closeButton = CP_CLOSE,
                      .ready = isReady,
                      .showState = showState,
                      .endUnits = closeAfterJob,
                      .closeUnits = closeBoth});

void showChange(WINDOW dialog) { theDialog.showChange(dialog); }

// ---- choosing ---------------------------------------------------------------------------------------------------

void chooseInputTape(WINDOW dialog) { theDialog.chooseInputTape(dialog, ioUnit); }

void chooseOutputTape(WINDOW dialog) {
  if (theDialog.takes(dialog, chooseOutputDrives(ioUnit))) {
    closeOutput();
    openChosenOutputs(ioUnit);
    showChange(dialog);
  }
}

/// Positions a disk input where its job begins. @return false after a box when it is no file of the chosen format
bool positionInput() {
  std::rewind(input().fp);
  if (inFileType != kUnformatted || tpf::readFileHeader(input().fp)) return true;
  xvt_dm_post_error("Unrecognized format in file %s", input().name);
  return false;
}

void chooseInputDisk(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFileToOpen(&file, format().inputExtension, "Open Input Disk File")) return;
  if (!format().outputIsDirectory && isOpenFile(output(), file)) {
    xvt_dm_post_error("This file is already being used for output. Choose another file.");
    return;
  }
  closeInput();
  if (!openDiskUnit(&input(), file, "rb"))
    xvt_dm_post_error("Error opening file %s", file.name);
  else if (!positionInput())
    closeInput();
  showChange(dialog);
}

/// A folder chosen by itself gives its own name to the files that are to come.
void nameAfterFolder(FILE_SPEC* file) {
  const std::string_view path = fieldText(file->dir.path);
  const std::string_view name = path.substr(path.rfind('/') + 1);
  copyText(file->name, std::string(name.empty() ? "segd" : name) + "." + format().outputExtension);
}

/// A job that names its output files itself takes the directory of whatever file is chosen, and the beginning of its
/// files' names. The file is not touched, and need not exist.
void chooseOutputDirectory(WINDOW dialog) {
  FILE_SPEC file{};
  if (!chooseFolderByFile(&file, format().outputExtension, "Select any file to define directory")) return;
  if (file.name[0] == '\0') nameAfterFolder(&file);
  closeOutput();
  output().fs = file;
  output().type = UT_DISK;
  output().state = 1;
  copyText(output().name, file.dir.path);
  showChange(dialog);
}

void chooseOutputFile(WINDOW dialog) {
  const bool image = inFileType == kUnformatted;
  const bool raw = image && getOutFileType() != OF_TPF;
  FILE_SPEC file{};
  if (!chooseFileToSave(&file, raw ? kRawExtension : format().outputExtension, "Save dataset as:")) return;
  if (isOpenFile(input(), file)) {
    xvt_dm_post_error("This file name is already being used for input. Choose another file name.");
    return;
  }
  closeOutput();
  // A job that looks for its inputs at its start may find the chosen file among them: it is emptied by the job, then.
  bool opened = openDiskUnit(&output(), file, image ? "w+b" : "r+b");
  if (!opened && !image && errno == ENOENT) opened = openDiskUnit(&output(), file, "w+b");
  if (!opened) {
    xvt_dm_post_error("Error opening file %s", file.name);
  } else if (image && !raw && !beginTapeImage(output().fp, output().name)) {
    xvt_dm_post_error("Error writing file header to disk file");
    closeOutput();
  }
  showChange(dialog);
}

void chooseOutputDisk(WINDOW dialog) {
  if (format().outputIsDirectory)
    chooseOutputDirectory(dialog);
  else
    chooseOutputFile(dialog);
}

void chooseFormat(WINDOW dialog) {
  const WINDOW list = xvt_win_get_ctl(dialog, CP_FORMAT);
  if (theDialog.refuses(dialog)) {
    xvt_list_set_selected(list, inFileType - 1, true);
    return;
  }
  const int row = xvt_list_get_selected(list);
  if (row < 0 || row + 1 == inFileType) return;
  inFileType = row + 1;
  // A disk output's extension belongs to the format that it was chosen for.
  if (output().type == UT_DISK && output().state == 1) closeOutput();
  showChange(dialog);
}

// ---- the other buttons ------------------------------------------------------------------------------------------

void editParameters(WINDOW dialog) {
  if (format().parametersHandler == nullptr)
    notYetBuilt(formatText("The %s copy", format().name).c_str());
  else if (xvt_dlg_create_res(WD_MODAL, format().parameters, format().parametersHandler, &input().isM4) == NULL_WIN)
    xvt_dm_post_error("Can't open dialog");
  else
    showChange(dialog);
}

void chooseErrorOptions(WINDOW /*dialog*/) {
  if (!editErrorOptions(ioUnit, format().badBlocks)) xvt_dm_post_error("Error opening dialog");
}

/// From Start to the last word in the dialog. The program, or the dialog, may be asked to go meanwhile: both wait.
void start(WINDOW dialog) {
  if (format().job == nullptr) {
    notYetBuilt(formatText("The %s copy", format().name).c_str());
    return;
  }
  if (isReady() && input().type == UT_DISK && !positionInput()) closeInput();
  theDialog.start(dialog, [](const int& stopped) -> int {
    checkBOT(ioUnit);
    return stopped == 0 ? format().job(ioUnit) : JOB_NOT_BEGUN;
  });
}

constexpr ControlAction kActions[] = {
    {CP_START, start},
    {CP_INPUT_TAPE, chooseInputTape},
    {CP_INPUT_DISK, chooseInputDisk},
    {CP_OUTPUT_TAPE, chooseOutputTape},
    {CP_OUTPUT_DISK, chooseOutputDisk},
    {CP_PARAMETERS, editParameters},
    {CP_ERROR_OPTIONS, chooseErrorOptions},
};

// ---- events -----------------------------------------------------------------------------------------------------

void create(WINDOW dialog) {
  ioUnit = getDevPtr();
  inFileType = kUnformatted;
  unfmtInit();
  segyInit();
  segdInit();
  constexpr const char* kNames[] = {kFormats[0].name, kFormats[1].name, kFormats[2].name};
  fillList(dialog, CP_FORMAT, kNames, 0);
  theDialog.open(dialog);
}

void control(WINDOW dialog, const EVENT& event) {
  if (event.ctl.id == CP_FORMAT && event.ctl.what == CTL_SELECT)
    chooseFormat(dialog);
  else if (theDialog.admits(dialog, event))
    runAction(kActions, dialog, event);
}

}  // namespace

void setCopyState(WINDOW theWindow, int newState, const char* str1, const char* str2, int /*m4*/) {
  const bool idle = newState != COPY_RUNNING;
  enableControls(
      theWindow,
      {CP_INPUT_TAPE, CP_INPUT_DISK, CP_OUTPUT_TAPE, CP_OUTPUT_DISK, CP_FORMAT, CP_PARAMETERS, CP_ERROR_OPTIONS}, idle);
  enableControl(theWindow, CP_START, newState == COPY_READY);
  if (idle) {
    setControlText(theWindow, CP_INPUT_NAME, str1);
    setControlText(theWindow, CP_OUTPUT_NAME, str2);
  }
}

long CopyDialog_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent, {.create = create, .control = control});
}
