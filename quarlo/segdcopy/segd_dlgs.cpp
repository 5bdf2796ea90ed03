#include "quarlo/segdcopy/segd_dlgs.h"

#include <algorithm>
#include <string>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/settings.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

constexpr const char* kOutputExtension = ".sgd";
constexpr std::size_t kMaxOutputName = 200;  // so that a number and the extension find room in a file's name

SgdCopyParams editedCopy;
SgdCopyParams editedFiles;
SgdCopyParams editedZero;

/// What a part's dialog edits: the settings of the dialog that opened it, or those in force.
SgdCopyParams& recordOf(WINDOW dialog) {
  auto* const record = static_cast<SgdCopyParams*>(xvt_vobj_get_data(dialog));
  return record != nullptr ? *record : SgdParams;
}

// ---- options ----------------------------------------------------------------------------------------------------

constexpr FlagControl<SgdCopyParams> kFlags[] = {
    {SD_LIMIT, &SgdCopyParams::limit},
    {SD_ZERO_TRACES, &SgdCopyParams::zeroTraces},
    {SD_LENGTH_OVERRIDE, &SgdCopyParams::recLenOR},
    {SD_USE_CHANNEL_SETS, &SgdCopyParams::useScanHdr},
    {SD_NUMBER_BY_FILE, &SgdCopyParams::ffidOption},
    {SD_BLOCK_TRACES, &SgdCopyParams::blockTraces},
    {SD_LIMIT_BYTES, &SgdCopyParams::limitBytes},
    {SD_PREPEND, &SgdCopyParams::prepend},
    {SD_USE_LOG, &SgdCopyParams::useLog},
    {SD_DECIMATE, &SgdCopyParams::itDecimates},
};

// The limits keep what is shown and what is computed from it apart from zero and within its type.
constexpr RealField kByteLimit = {
    .control = SD_BYTE_LIMIT, .decimals = 3, .low = 0.001, .high = 1e9, .unit = kBytesPerGigabyte};
constexpr RealField kLengthUnit = {.control = SD_LENGTH_UNIT, .decimals = 4, .low = 0.0001, .high = 1000.0};

NumberField intervalField(SgdCopyParams* params) {
  return {.control = SD_DECIMATE_INTERVAL, .value = &params->itsDecimateIntvl, .low = 1};
}

void enableByOptions(WINDOW dialog, const SgdCopyParams& params) {
  enableControls(dialog, {SD_LIMIT_LIST, SD_LIMIT_PATH}, params.limit);
  enableControls(dialog, {SD_ZERO_LIST, SD_ZERO_PATH}, params.zeroTraces);
  enableControl(dialog, SD_LENGTH_UNIT, params.recLenOR);
  enableControl(dialog, SD_BYTE_LIMIT, params.limitBytes);
  enableControls(dialog, {SD_PREPEND_FILE, SD_PREPEND_PATH}, params.prepend);
  enableControls(dialog, {SD_LOG_FILE, SD_LOG_PATH}, params.useLog);
  enableControl(dialog, SD_DECIMATE_INTERVAL, params.itDecimates);
}

void showLists(WINDOW dialog, const SgdCopyParams& params) {
  showPath(dialog, SD_LIMIT_PATH, params.recLimDir, params.recLimFile);
  showPath(dialog, SD_ZERO_PATH, params.trcLimDir, params.trcLimFile);
}

bool editOptionFlags(WINDOW dialog, const EVENT& event) {
  if (!editFlags(dialog, event, kFlags, &editedCopy)) return false;
  enableByOptions(dialog, editedCopy);
  return true;
}

bool editLengthUnit(WINDOW dialog, const EVENT& event) {
  double seconds = editedCopy.recLenFactor;
  if (!readReal(dialog, event, kLengthUnit, &seconds)) return false;
  editedCopy.recLenFactor = static_cast<float>(seconds);
  return true;
}

/// What the names of the output files begin with: the setting without the extension, which the job takes off.
void showOutputName(WINDOW dialog, const SgdCopyParams& params) {
  const std::string_view name = fieldText(params.outFile);
  setControlText(dialog, SD_OUTPUT_NAME, std::string(name.substr(0, name.rfind('.'))).c_str());
}

/// The directory is chosen elsewhere: a typed one is left out. A name that is too long leaves the old one.
bool editOutputName(WINDOW dialog, const EVENT& event) {
  if (event.ctl.what != CTL_FOCUS_LOSS || event.ctl.id != SD_OUTPUT_NAME) return false;
  std::string name(trimText(controlText(dialog, SD_OUTPUT_NAME)));
  name.erase(0, name.rfind('/') + 1);
  if (name.empty())
    copyText(editedCopy.outFile, "");
  else if (name.size() <= kMaxOutputName)
    copyText(editedCopy.outFile, name.ends_with(kOutputExtension) ? name : name + kOutputExtension);
  showOutputName(dialog, editedCopy);
  return true;
}

void editFileList(WINDOW dialog) {
  openPart(DLG_SEGD_FILES, SegdFFRangeDlg_eh, &editedCopy);
  showLists(dialog, editedCopy);
}

void editZeroList(WINDOW dialog) {
  openPart(DLG_SEGD_ZERO, SegdListDlg_eh, &editedCopy);
  showLists(dialog, editedCopy);
}

void choosePrependFile(WINDOW dialog) {
  chooseFileInto({dialog, SD_PREPEND_PATH, &editedCopy.prepDir, &editedCopy.prepFile}, chooseFileToOpen, "");
}

void chooseLogFile(WINDOW dialog) {
  chooseFileInto({dialog, SD_LOG_PATH, &editedCopy.logDir, &editedCopy.logFile}, chooseFileToSave, "txt");
}

void storeCopy(WINDOW dialog) {
  SgdParams = editedCopy;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kActions[] = {
    {SD_LIMIT_LIST, editFileList}, {SD_ZERO_LIST, editZeroList}, {SD_PREPEND_FILE, choosePrependFile},
    {SD_LOG_FILE, chooseLogFile},  {SD_OK, storeCopy},           {SD_CANCEL, xvt_vobj_destroy},
};

void createCopy(WINDOW dialog) {
  editedCopy = SgdParams;
  setState(dialog, &editedCopy);
}

void controlCopy(WINDOW dialog, const EVENT& event) {
  if (!editOptionFlags(dialog, event) && !readReal(dialog, event, kByteLimit, &editedCopy.byteLimit) &&
      !editLengthUnit(dialog, event) && !editOutputName(dialog, event) &&
      !readNumber(dialog, event, intervalField(&editedCopy)))
    runAction(kActions, dialog, event);
}

// ---- field file list --------------------------------------------------------------------------------------------

void createFiles(WINDOW dialog) {
  editedFiles = recordOf(dialog);
  xdCheckRadioButton(dialog, editedFiles.recLimType == SEGD_INCLUDE ? SF_INCLUSION : SF_EXCLUSION, SF_INCLUSION,
                     SF_EXCLUSION);
  showPath(dialog, SF_PATH, editedFiles.recLimDir, editedFiles.recLimFile);
}

void chooseFilesList(WINDOW dialog) {
  chooseFileInto({dialog, SF_PATH, &editedFiles.recLimDir, &editedFiles.recLimFile}, chooseFileToOpen, "");
}

void storeFiles(WINDOW dialog) {
  recordOf(dialog) = editedFiles;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kFilesActions[] = {
    {SF_CHOOSE_FILE, chooseFilesList}, {SF_OK, storeFiles}, {SF_CANCEL, xvt_vobj_destroy}};

void controlFiles(WINDOW dialog, const EVENT& event) {
  if (!chooseFromOne(dialog, event, SF_INCLUSION, SF_EXCLUSION, &editedFiles.recLimType))
    runAction(kFilesActions, dialog, event);
}

// ---- zero trace list --------------------------------------------------------------------------------------------

/// The key, whose last byte has to lie within the trace header: the types are 1, 2 and 3 bytes long.
KeyControls zeroKey() {
  return {.byteControl = ZT_BYTE,
          .typeControl = ZT_TYPE,
          .byte = &editedZero.trcLimByte,
          .type = &editedZero.trcLimType,
          .types = SegdDataTypes,
          .lastByte = kSegdTraceHeaderBytes - editedZero.trcLimType};
}

/// Brings the key's byte into the trace header, whose room for it depends on the type.
void keepKeyInHeader() { editedZero.trcLimByte = std::clamp(editedZero.trcLimByte, 1, zeroKey().lastByte); }

void createZero(WINDOW dialog) {
  editedZero = recordOf(dialog);
  showPath(dialog, ZT_PATH, editedZero.trcLimDir, editedZero.trcLimFile);
  editedZero.trcLimType = std::clamp(editedZero.trcLimType, 0, kSegdKeyTypes - 1);
  keepKeyInHeader();
  showKey(dialog, zeroKey());
}

void chooseZeroList(WINDOW dialog) {
  chooseFileInto({dialog, ZT_PATH, &editedZero.trcLimDir, &editedZero.trcLimFile}, chooseFileToOpen, "");
}

void storeZero(WINDOW dialog) {
  recordOf(dialog) = editedZero;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kZeroActions[] = {
    {ZT_CHOOSE_FILE, chooseZeroList}, {ZT_OK, storeZero}, {ZT_CANCEL, xvt_vobj_destroy}};

void controlZero(WINDOW dialog, const EVENT& event) {
  if (editKey(dialog, event, zeroKey())) {
    keepKeyInHeader();
    setControlNumber(dialog, ZT_BYTE, editedZero.trcLimByte);
  } else {
    runAction(kZeroActions, dialog, event);
  }
}

}  // namespace

void setState(WINDOW theDialog, const SgdCopyParams* params) {
  showFlags(theDialog, kFlags, *params);
  showLists(theDialog, *params);
  showPath(theDialog, SD_PREPEND_PATH, params->prepDir, params->prepFile);
  showPath(theDialog, SD_LOG_PATH, params->logDir, params->logFile);
  showOutputName(theDialog, *params);
  showReal(theDialog, kByteLimit, params->byteLimit);
  showReal(theDialog, kLengthUnit, params->recLenFactor);
  setControlNumber(theDialog, SD_DECIMATE_INTERVAL, params->itsDecimateIntvl);
  enableByOptions(theDialog, *params);
}

long SegdCpy_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createCopy, .control = controlCopy});
}

long SegdFFRangeDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createFiles, .control = controlFiles});
}

long SegdListDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createZero, .control = controlZero});
}
