#include "quarlo/dump/tdmp_dlg.h"

#include <memory>
#include <new>
#include <string>

#include "libkyr/files.h"
#include "libkyr/text.h"
#include "quarlo/common/dump_win.h"
#include "quarlo/common/unitdialog.h"
#include "quarlo/common/windows.h"
#include "quarlo/dump/dump_ctl.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/taperead.h"
#include "quarlo/tapelib/homefolder.h"
#include "resources/ids.h"

namespace {

constexpr DumpControls kStyleControls = {TD_FORMAT, TD_SIGNED, TD_UNSIGNED, TD_BIG_ENDIAN, TD_LITTLE_ENDIAN};
constexpr int kTapeModes[] = {0x1000001, 0x2000002};
constexpr int kUnread = -1;  // no block to show again: none was read, or the last read failed

UnitStruct* ioUnit = nullptr;

// Settings.
DumpStyle style;
int readBlocks = 1;  // blocks of one Dump
int skipBlocks = 1;
int startByte = 0;
int dumpBytes = 1024;
int tapeMode = kTapeModes[0];  // kept for the user; nothing here depends on it

// The block read last, in memory of its own: other jobs use the units' buffer.
std::unique_ptr<char[]> dumpBuf;
int nBytesIn = kUnread;
int blockNumber = 0;
int blocksLastRead = 0;

int haltDump = 0;

// Where the lines go.
DumpPane dumpWindow(kTapeDump, TD_SHOW_WINDOW, &gTDumpIsVisible);
FileHandle txtFp;
bool fileGivenUp = false;  // after its first failure in a dump

constexpr NumberField kFields[] = {
    {.control = TD_READ_BLOCKS, .value = &readBlocks, .absolute = true},
    {.control = TD_SKIP_BLOCKS, .value = &skipBlocks, .absolute = true},
    {.control = TD_START_BYTE, .value = &startByte},
    {.control = TD_DUMP_BYTES, .value = &dumpBytes},
};

// ---- output -----------------------------------------------------------------------------------------------------

void outToFile(const char* lines, std::FILE* fp) {
  if (!fileGivenUp) fileGivenUp = !filePrint(lines, fp);
}

void outToBoth(const char* lines, std::FILE* fp) {
  outToFile(lines, fp);
  dumpOut(lines, dumpWindow.handle());
}

void showBytes(const char* readBuf, int nBytes, std::FILE* fp, DUMP_FORMAT format) {
  const DumpRange range = dumpRange(format, nBytes, startByte, dumpBytes);
  if (range.count == 0) return;
  DumpStyle asked = style;
  asked.format = format;
  const long lines = formatDump({readBuf + range.first, static_cast<std::size_t>(range.count)}, range.first, asked,
                                [fp](const char* text) { outToBoth(text, fp); });
  if (lines == 0) return;
  outToFile("\n\n", fp);
  dumpOut(" ", dumpWindow.handle());
}

void showFormatted() {
  std::FILE* fp = txtFp.get();
  switch (style.format) {
    case DF_HEX:
      return do_hex(dumpBuf.get(), nBytesIn, fp, ioUnit);
    case DF_ASCII:
    case DF_EBCDIC:
      return do_text(dumpBuf.get(), nBytesIn, fp, style.format, ioUnit);
    case DF_SHORT:
      return do_hword(dumpBuf.get(), nBytesIn, fp, ioUnit);
    case DF_LONG:
      return do_fword(dumpBuf.get(), nBytesIn, fp, ioUnit);
    case DF_IBM_FLOAT:
    case DF_IEEE_FLOAT:
      return do_float(dumpBuf.get(), nBytesIn, fp, style.format, ioUnit);
  }
}

/// What was read last, with its heading.
void showBlock(bool onConsole) {
  const std::string heading = nBytesIn == 0 ? "End of File" : formatText("Block %d, %d bytes", blockNumber, nBytesIn);
  if (onConsole) console_out(heading.c_str());
  outToBoth(heading.c_str(), txtFp.get());
  showFormatted();
}

/// Each dump tries its file anew.
void beginOutput() {
  fileGivenUp = false;
  if (txtFp) std::clearerr(txtFp.get());
  dumpWindow.show();
}

// ---- reading ----------------------------------------------------------------------------------------------------

/// Reads what is to be shown next. @return false when there is nothing: a failure, or the end of the data
bool readBlock() {
  const TapeRead read = readUnit(ioUnit, 0, dumpBuf.get(), readSize(*ioUnit, false));
  const bool isMark = read.kind == TapeRead::Kind::Mark;
  const bool isShown = isMark || read.kind == TapeRead::Kind::Block;
  nBytesIn = isShown ? read.bytes : kUnread;
  if (isMark) ioUnit->fileNum++;
  if (read.bytes > 0) blockNumber = ioUnit->blockNum - 1;
  return isShown;
}

/// Behind the end of data there is nothing to read on for.
int dumpBlocks(WINDOW dialog) {
  blocksLastRead = 0;
  for (; blocksLastRead < readBlocks; ++blocksLastRead) {
    if (getHaltDump(dialog) != 0) {
      console_out(" Dump halted by user.");
      break;
    }
    if (!readBlock()) break;
    showBlock(true);
    tellControlDialog();
  }
  return JOB_OK;
}

bool isTapeOpen() { return ioUnit->state == 1 && ioUnit->type == UT_TAPE; }

void showState(WINDOW dialog, COPY_STATE state) {
  set_tdmp_state(dialog, state == COPY_NOT_READY ? 0 : 1, ioUnit->name);
  if (haltDump != 0) enableControl(dialog, TD_HALT, false);
  enableControl(dialog, TD_REDUMP, state != COPY_RUNNING && blocksLastRead == 1);
}

/// The tape stays open where it stands: the next dump goes on from there.
int keepUnits() { return 0; }

UnitDialog theDialog(
    {.status = 0, .closeButton = TD_CLOSE, .ready = isTapeOpen, .showState = showState, .endUnits = keepUnits});

void dump(WINDOW dialog) {
  if (!dumpBuf) return xvt_dm_post_error("Error allocating memory for dump buffer.");
  haltDump = 0;
  theDialog.run(dialog, &haltDump, [dialog] {
    beginOutput();
    dumpClear(dumpWindow.handle());
    return dumpBlocks(dialog);
  });
}

void redump(WINDOW /*dialog*/) {
  if (nBytesIn == kUnread) return;
  beginOutput();
  showBlock(false);
}

// ---- the other buttons ------------------------------------------------------------------------------------------

void selectDrive(WINDOW dialog) { theDialog.chooseInputTape(dialog, ioUnit); }

void skip(int count) {
  const RunningJob job(nullptr);
  tlv_skip_blocks(ioUnit, 0, count);
  tellControlDialog();
}

void skipBack(WINDOW /*dialog*/) { skip(-skipBlocks); }
void skipForward(WINDOW /*dialog*/) { skip(skipBlocks); }

void halt(WINDOW dialog) {
  haltDump = 1;
  enableControl(dialog, TD_HALT, false);
}

void showOrHide(WINDOW /*dialog*/) { dumpWindow.toggle(); }

constexpr ControlAction kAnyTime[] = {{TD_HALT, halt}, {TD_SHOW_WINDOW, showOrHide}};
constexpr ControlAction kBetweenJobs[] = {
    {TD_SELECT_DRIVE, selectDrive}, {TD_DUMP, dump}, {TD_REDUMP, redump}, {TD_SKIP_BACK, skipBack},
    {TD_SKIP_FORWARD, skipForward},
};

// ---- events -----------------------------------------------------------------------------------------------------

void initSettings() {
  style = DumpStyle{};
  readBlocks = skipBlocks = 1;
  startByte = 0;
  dumpBytes = 1024;
  tapeMode = kTapeModes[0];
  nBytesIn = kUnread;
  blocksLastRead = 0;
  haltDump = 0;
}

void openOutput(WINDOW dialog) {
  fileGivenUp = false;
  if (!dumpWindow.open(dialog)) return;
  txtFp = openFile(inHomeFolder("tdump.txt").c_str(), "w");
  if (!txtFp) console_out("  ** Cannot open \"tdump.txt\": the dump goes to the Tape Dump Window only.");
}

void create(WINDOW dialog) {
  gTAnlsWindow = dialog;
  gTAnlsWindowUp = 1;
  ioUnit = getDevPtr();
  initSettings();
  dumpBuf.reset(new (std::nothrow) char[ioUnit->ioBufLen]);
  if (!showStyle(dialog, kStyleControls, style)) xvt_dm_post_error("Memory error getting format list");
  xdCheckRadioButton(dialog, TD_TAPE_MODE_1, TD_TAPE_MODE_1, TD_TAPE_MODE_2);
  for (const NumberField& field : kFields) showNumber(dialog, field);
  theDialog.follow(dialog);
  openOutput(dialog);
}

void destroy(WINDOW /*dialog*/) {
  dumpWindow.close();
  haltDump = 1;   // a dump that is still running sees it at its next block
  txtFp.reset();  // every line was flushed when it was written
  if (!theDialog.isRunning()) dumpBuf.reset();
  gTAnlsWindow = NULL_WIN;
  gTAnlsWindowUp = 0;
}

void control(WINDOW dialog, const EVENT& event) {
  for (const NumberField& field : kFields)
    if (readNumber(dialog, event, field)) return;
  if (chooseStyle(dialog, event, kStyleControls, &style)) return;
  if (int mode = 0; chooseRadio(dialog, event, TD_TAPE_MODE_1, TD_TAPE_MODE_2, &mode)) {
    tapeMode = kTapeModes[mode];
    return;
  }
  if (!runAction(kAnyTime, dialog, event) && theDialog.admits(dialog, event)) runAction(kBetweenJobs, dialog, event);
}

}  // namespace

void set_tdmp_state(WINDOW theWindow, int newState, const char* str) {
  enableControls(theWindow, {TD_HALT, TD_DUMP, TD_SKIP_BACK, TD_SKIP_FORWARD}, newState != 0);
  setControlText(theWindow, TD_DRIVE, newState != 0 ? str : "No drive selected");
}

int getHaltDump(WINDOW /*theWindow*/) {
  xvt_app_process_pending_events();
  return haltDump != 0 || xvt_app_is_ending() ? 1 : 0;
}

void do_hex(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* /*ioUnit*/) {
  showBytes(readBuf, nBytes, fp, DF_HEX);
}

void do_text(const char* readBuf, int nBytes, std::FILE* fp, int textType, UnitStruct* /*ioUnit*/) {
  showBytes(readBuf, nBytes, fp, textType == DF_EBCDIC ? DF_EBCDIC : DF_ASCII);
}

void do_hword(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* /*ioUnit*/) {
  showBytes(readBuf, nBytes, fp, DF_SHORT);
}

void do_fword(const char* readBuf, int nBytes, std::FILE* fp, UnitStruct* /*ioUnit*/) {
  showBytes(readBuf, nBytes, fp, DF_LONG);
}

void do_float(const char* readBuf, int nBytes, std::FILE* fp, int floatType, UnitStruct* /*ioUnit*/) {
  showBytes(readBuf, nBytes, fp, floatType == DF_IBM_FLOAT ? DF_IBM_FLOAT : DF_IEEE_FLOAT);
}

bool filePrint(const char* dumpStr, std::FILE* fp) {
  if (fp == nullptr) return true;
  if (std::fputs(dumpStr, fp) >= 0 && std::fputc('\n', fp) != EOF && std::fflush(fp) == 0) return true;
  xvt_dm_post_error("Error writing to disk file");
  return false;
}

long tapeDumpDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return theDialog.events(xdWindow, *xdEvent, {.create = create, .control = control, .destroy = destroy});
}
