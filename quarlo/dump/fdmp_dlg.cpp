#include "quarlo/dump/fdmp_dlg.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/common/dump_win.h"
#include "quarlo/common/windows.h"
#include "quarlo/dump/dump_ctl.h"
#include "quarlo/instruments/convtest.h"
#include "quarlo/instruments/dcofstst.h"
#include "quarlo/instruments/dynratst.h"
#include "quarlo/instruments/eintest.h"
#include "quarlo/instruments/gnacctst.h"
#include "quarlo/instruments/gnstptst.h"
#include "quarlo/instruments/imrsptst.h"
#include "quarlo/instruments/thdtest.h"
#include "quarlo/instruments/xfeedtst.h"
#include "quarlo/reports/killsrep.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/savetext.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/largefile.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

constexpr int kFileDump = 1;  // to dumpInit: anything but TAPE_DUMP

constexpr DumpControls kStyleControls = {FD_FORMAT, FD_SIGNED, FD_UNSIGNED, FD_BIG_ENDIAN, FD_LITTLE_ENDIAN};
constexpr int kMaxRead = 65536;
constexpr int kInitialBytes = 1024;
/// Whole numbers up to here, eight petabytes, are exact in a double.
constexpr double kExact = 9007199254740992.0;

constexpr ReportDialog dumpReports[] = {
    {"Trace Kills Report", DLG_KILLS_REPORT, KillsRep_eh},
    {"A/D Converter Test", DLG_AD_TEST, ConvTest_eh},
    {"Crossfeed Test", DLG_CROSSFEED_TEST, XFeedTest_eh},
    {"THD Test", DLG_DISTORTION_TEST, HarmDistTest_eh},
    {"EIN Test", DLG_NOISE_TEST, EINTest_eh},
    {"DC Offset Test", DLG_DC_OFFSET_TEST, DCOffsetTest_eh},
    {"Dynamic Range Test", DLG_DYNAMIC_RANGE_TEST, DynRangeTest_eh},
    {"Impulse Resp. Test", DLG_IMPULSE_TEST, ImpRespTest_eh},
    {"Gain Accuracy Test", DLG_GAIN_ACCURACY_TEST, GainAccuTest_eh},
    {"Gain Step Test", DLG_GAIN_STEP_TEST, GainStepTest_eh},
};
constexpr int kReports = static_cast<int>(std::size(dumpReports));

// The file. Positions and sizes are whole numbers of bytes, kept as doubles.
std::unique_ptr<LargeFile> TheFile;
FILE_SPEC inputFile{};
FILE_SPEC saveFile{};
double inputSize = 0;  // as it was opened
double currentByte = 0;
double seekBytes = kInitialBytes;
double goToByte = 0;
int readBytes = kInitialBytes;

// The piece read last.
std::unique_ptr<char[]> dumpBuf;
int nBytesIn = 0;

DumpStyle style;
DumpPane dumpWindow(kFileDump, FD_SHOW_WINDOW, &gFDumpIsVisible);

int theReport = 0;
int repDlgUp = 0;
ReportRecord reportRecord{};

constexpr const char* kAtEndHint = "The end of the file: \"Move back\" and \"Move to byte\" lead away from it.";

constexpr NumberField kReadField = {.control = FD_READ_BYTES, .value = &readBytes, .low = 1, .high = kMaxRead};

bool isOpen() { return TheFile != nullptr; }

bool isDataset() {
  constexpr std::string_view kExtension = ".kyr";
  return isOpen() && std::string_view(inputFile.name).ends_with(kExtension);
}

// ---- the piece as text --------------------------------------------------------------------------------------------

void showPiece(int nBytes, DUMP_FORMAT format) {
  const int count = std::clamp(nBytes, 0, nBytesIn);
  if (count == 0) return;
  DumpStyle asked = style;
  asked.format = format;
  const long lines = formatDump({dumpBuf.get(), static_cast<std::size_t>(count)}, 0, asked,
                                [](const char* text) { dumpOut(text, dumpWindow.handle()); });
  if (lines > 0) dumpOut(" ", dumpWindow.handle());
}

void showFormatted() {
  switch (style.format) {
    case DF_HEX:
      return fileHexDump(nBytesIn);
    case DF_ASCII:
    case DF_EBCDIC:
      return fileTextDump(nBytesIn);
    case DF_SHORT:
      return fileShortDump(nBytesIn);
    case DF_LONG:
      return fileLongDump(nBytesIn);
    case DF_IBM_FLOAT:
    case DF_IEEE_FLOAT:
      return fileFloatDump(nBytesIn);
  }
}

void readAndShow() {
  const int result = TheFile->Read(dumpBuf.get(), readBytes);
  nBytesIn = std::max(result, 0);
  if (result < 0) {
    xvt_dm_post_error("Read error from disk");
  } else {
    console_printf("Read %d bytes", result);
    dumpWindow.show();
    dumpClear(dumpWindow.handle());
    showFormatted();
  }
}

void readPiece(WINDOW dialog) {
  if (!isOpen()) return;
  runGuarded(readAndShow);
  setCurrent(dialog);
}

// ---- the position -------------------------------------------------------------------------------------------------

/// @return whether the file now stands there; if not, a console line says so
bool seek(WINDOW dialog, double offset, int whence) {
  if (!isOpen()) return false;
  const bool moved = TheFile->Seek(offset, whence);
  if (!moved) console_out("  *** Error moving file pointer.");
  setCurrent(dialog);
  return moved;
}

void moveBack(WINDOW dialog) {
  if (seek(dialog, -seekBytes, SEEK_CUR)) console_printf("Moved back %.0f bytes.", seekBytes);
}

void moveForward(WINDOW dialog) {
  if (seek(dialog, seekBytes, SEEK_CUR)) console_printf("Moved forward %.0f bytes.", seekBytes);
}

void rewindFile(WINDOW dialog) {
  if (seek(dialog, 0, SEEK_SET)) console_out("Rewound file.");
}

void moveToByte(WINDOW dialog) {
  if (seek(dialog, goToByte, SEEK_SET)) console_printf("Moved to byte %.0f.", goToByte);
}

void showBytes(WINDOW dialog, int control, double bytes) {
  setControlText(dialog, control, formatText("%.0f", bytes).c_str());
}

/// The whole number that a text begins with, within the limits; 0 for none.
double parseBytes(const std::string& text, double low, double high) {
  const double number = std::strtod(text.c_str(), nullptr);
  if (std::isnan(number)) return 0;
  return std::trunc(std::clamp(number, low, high)) + 0.0;  // no "-0"
}

void readSeekBytes(WINDOW dialog) {
  seekBytes = std::abs(parseBytes(controlText(dialog, FD_SEEK_BYTES), -kExact, kExact));
  showBytes(dialog, FD_SEEK_BYTES, seekBytes);
}

void readGoToByte(WINDOW dialog) {
  goToByte = parseBytes(controlText(dialog, FD_GO_TO_BYTE), 0, inputSize);
  showBytes(dialog, FD_GO_TO_BYTE, goToByte);
}

void readReadBytes(WINDOW dialog, const EVENT& event) {
  if (parseNumber(controlText(dialog, FD_READ_BYTES).c_str(), {}) > kMaxRead)
    xvt_dm_post_note("Maximum bytes per read is %d.", kMaxRead);
  if (xvt_vobj_is_valid(dialog)) readNumber(dialog, event, kReadField);
}

/// Takes over a field that the user leaves. @return whether it was one
bool leaveField(WINDOW dialog, const EVENT& event) {
  if (event.ctl.what != CTL_FOCUS_LOSS) return false;
  switch (event.ctl.id) {
    case FD_READ_BYTES:
      readReadBytes(dialog, event);
      return true;
    case FD_SEEK_BYTES:
      readSeekBytes(dialog);
      return true;
    case FD_GO_TO_BYTE:
      readGoToByte(dialog);
      return true;
    default:
      return false;
  }
}

// ---- files --------------------------------------------------------------------------------------------------------

void showFile(WINDOW dialog) {
  setControlText(dialog, FD_FILE, isOpen() || repDlgUp != 0 ? pathOf(inputFile).c_str() : "No file selected");
  setDlgState(dialog, repDlgUp);
}

/// @return false when it cannot be opened; the file that was open then stays so
bool openInput(const FILE_SPEC& file) {
  auto opened = std::make_unique<LargeFile>(pathOf(file).c_str(), "rb");
  if (!opened->IsValid()) return false;
  TheFile = std::move(opened);
  inputFile = file;
  inputSize = TheFile->GetSize();
  nBytesIn = 0;
  return true;
}

void chooseInput(WINDOW dialog) {
  FILE_SPEC file = inputFile;
  if (!chooseFileToOpen(&file, "", "Open Input Disk File")) return;
  if (openInput(file))
    console_printf("Opened file %s.", file.name);
  else
    xvt_dm_post_error("Error opening file: %s", file.name);
  readGoToByte(dialog);
  showFile(dialog);
}

std::string dumpedText() {
  std::string text;
  if (!xvt_vobj_is_valid(dumpWindow.handle())) return text;
  text.resize(getTextLength(dumpWindow.handle()));
  dumpTextGet(dumpWindow.handle(), text.data());
  return text;
}

void saveText(WINDOW /*dialog*/) {
  const bool inUse = isOpen() || repDlgUp != 0;
  runGuarded([&] {
    saveTextAs(&saveFile, "txt", "Save dataset as:", inUse ? &inputFile : nullptr,
               [](std::FILE* to) { return writeText(to, dumpedText()); });
  });
}

// ---- reports ------------------------------------------------------------------------------------------------------

void startChosenReport(WINDOW dialog) { startReport(dialog, dumpReports[theReport]); }

void chooseReport(WINDOW dialog) {
  const int row = xvt_list_get_selected(xvt_win_get_ctl(dialog, FD_REPORTS));
  if (row >= 0 && row < kReports) theReport = row;
}

/// The file comes back from a report where it was left.
void reportEnded(WINDOW dialog) {
  if (repDlgUp != 0 || reportRecord.windowIsUp == nullptr) return;
  reportRecord.windowIsUp = nullptr;
  const double place = currentByte;
  if (openInput(inputFile))
    TheFile->Seek(place, SEEK_SET);
  else
    xvt_dm_post_error("Error opening file: %s", inputFile.name);
  showFile(dialog);
}

// ---- events -------------------------------------------------------------------------------------------------------

void showOrHide(WINDOW /*dialog*/) { dumpWindow.toggle(); }

void closeDialog(WINDOW dialog) {
  if (repDlgUp != 0) return tellUser("A report dialog is open. Close it first.");
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kActions[] = {
    {FD_OPEN, chooseInput},
    {FD_READ, readPiece},
    {FD_MOVE_BACK, moveBack},
    {FD_MOVE_FORWARD, moveForward},
    {FD_REWIND, rewindFile},
    {FD_MOVE_TO_BYTE, moveToByte},
    {FD_START_REPORT, startChosenReport},
    {FD_SHOW_WINDOW, showOrHide},
    {FD_SAVE, saveText},
    {FD_CLOSE, closeDialog},
};

void control(WINDOW dialog, const EVENT& event) {
  if (leaveField(dialog, event) || chooseStyle(dialog, event, kStyleControls, &style)) return;
  if (event.ctl.id == FD_REPORTS && event.ctl.what == CTL_SELECT) return chooseReport(dialog);
  runAction(kActions, dialog, event);
}

void create(WINDOW dialog) {
  gFAnlsWindowUp = 1;
  style = DumpStyle{};
  readBytes = kInitialBytes;
  seekBytes = kInitialBytes;
  goToByte = currentByte = inputSize = 0;
  theReport = repDlgUp = nBytesIn = 0;
  reportRecord.windowIsUp = nullptr;
  dumpBuf = std::make_unique<char[]>(kMaxRead);
  dumpWindow.open(dialog);
  if (!showStyle(dialog, kStyleControls, style)) xvt_dm_post_error("Memory error getting format list");
  initRepList(dialog);
  showNumber(dialog, kReadField);
  showBytes(dialog, FD_SEEK_BYTES, seekBytes);
  showBytes(dialog, FD_GO_TO_BYTE, goToByte);
  showFile(dialog);
}

void destroy(WINDOW /*dialog*/) {
  dumpWindow.close();
  TheFile.reset();
  dumpBuf.reset();
  nBytesIn = 0;
  gFAnlsWindowUp = 0;
}

}  // namespace

void fileHexDump(int nBytes) { showPiece(nBytes, DF_HEX); }
void fileTextDump(int nBytes) { showPiece(nBytes, style.format == DF_EBCDIC ? DF_EBCDIC : DF_ASCII); }
void fileShortDump(int nBytes) { showPiece(nBytes, DF_SHORT); }
void fileLongDump(int nBytes) { showPiece(nBytes, DF_LONG); }
void fileFloatDump(int nBytes) { showPiece(nBytes, style.format == DF_IBM_FLOAT ? DF_IBM_FLOAT : DF_IEEE_FLOAT); }

void setCurrent(WINDOW theWindow) {
  const bool failed = isOpen() && TheFile->Error() != 0;
  if (isOpen()) currentByte = TheFile->GetPos();
  const bool atEnd = currentByte >= inputSize;
  const std::string position = !isOpen() ? "" : failed ? "File Error" : atEnd ? "EOF" : formatText("%.0f", currentByte);
  setControlText(theWindow, FD_CURRENT_BYTE, position.c_str());
  setControlText(theWindow, FD_HINT, isOpen() && atEnd && !failed ? kAtEndHint : "");
  enableControls(theWindow, {FD_READ, FD_MOVE_FORWARD, FD_REWIND}, isOpen() && repDlgUp == 0 && !failed && !atEnd);
}

void setDlgState(WINDOW theDlg, int reportDlgIsUp) {
  const bool idle = reportDlgIsUp == 0;
  enableControl(theDlg, FD_OPEN, idle);
  enableControls(theDlg, {FD_READ_BYTES, FD_SEEK_BYTES, FD_GO_TO_BYTE, FD_MOVE_BACK, FD_MOVE_TO_BYTE},
                 idle && isOpen());
  enableControls(theDlg, {FD_REPORTS, FD_START_REPORT}, idle && isDataset());
  setCurrent(theDlg);
}

void initRepList(WINDOW theWindow) {
  const char* names[kReports];
  std::ranges::transform(dumpReports, names, &ReportDialog::name);
  fillList(theWindow, FD_REPORTS, names, theReport);
  if (xvt_list_count(xvt_win_get_ctl(theWindow, FD_REPORTS)) != kReports)
    xvt_dm_post_error("Memory error getting report list.");
}

void startReport(WINDOW theWindow, const ReportDialog& report) {
  if (!isOpen()) return;
  if (report.handler == nullptr) return notYetBuilt(formatText("The %s", report.name).c_str());
  reportRecord = {inputFile, dumpWindow.handle(), theWindow, &repDlgUp};
  TheFile.reset();
  repDlgUp = 1;
  showFile(theWindow);
  if (!openReport(report, &reportRecord)) reportEnded(theWindow);
}

long FileDumpDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(
      xdWindow, *xdEvent,
      {.create = create, .control = control, .user = reportEnded, .close = closeDialog, .destroy = destroy});
}
