#include "quarlo/segycopy/segy_dlgs.h"

#include <algorithm>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/dialogs/settings.h"
#include "quarlo/tapelib/tlv_fcn.h"
#include "resources/ids.h"

namespace {

constexpr double kGigabyte = 1073741824.0;

SgyCopyParams editedCopy;
PolyParams editedPolygon;
ListParams editedList;

// ---- options ----------------------------------------------------------------------------------------------------

const KeyControls kCopyKeys[] = {
    {SY_PRIMARY_BYTE, SY_PRIMARY_TYPE, &editedCopy.sortPrimByte, &editedCopy.sortPrimType, DataTypes},
    {SY_SECONDARY_BYTE, SY_SECONDARY_TYPE, &editedCopy.sortSecByte, &editedCopy.sortSecType, DataTypes},
    {SY_TERTIARY_BYTE, SY_TERTIARY_TYPE, &editedCopy.sortTerByte, &editedCopy.sortTerType, DataTypes},
    {SY_RECORD_BYTE, SY_RECORD_TYPE, &editedCopy.recordByte, &editedCopy.recordType, DataTypes},
};

constexpr FlagControl<SgyCopyParams> kCopyFlags[] = {
    {SY_RANGE_LIMIT, &SgyCopyParams::rangeLimit},   {SY_SORT, &SgyCopyParams::sort},
    {SY_TERTIARY, &SgyCopyParams::useTertiary},     {SY_KEEP_SORT_FILE, &SgyCopyParams::keepSortFile},
    {SY_REVERSE, &SgyCopyParams::reverseSort},      {SY_REPORT_FILES, &SgyCopyParams::reportFFIDs},
    {SY_MULTIPLE_IN, &SgyCopyParams::multipleIn},   {SY_CONCATENATE, &SgyCopyParams::concatInputs},
    {SY_MULTIPLE_OUT, &SgyCopyParams::multipleOut},
};

void enableCopyControls(WINDOW dialog, const SgyCopyParams& params) {
  enableControls(dialog, {SY_LIMIT_LIST, SY_LIMIT_POLYGON, SY_LIMIT}, params.rangeLimit);
  enableControls(dialog,
                 {SY_PRIMARY_BYTE, SY_PRIMARY_TYPE, SY_SECONDARY_BYTE, SY_SECONDARY_TYPE, SY_TERTIARY, SY_SORT_FILE,
                  SY_SORT_PATH, SY_KEEP_SORT_FILE, SY_REVERSE},
                 params.sort);
  enableControls(dialog, {SY_TERTIARY_BYTE, SY_TERTIARY_TYPE}, params.sort && params.useTertiary);
  enableControl(dialog, SY_CONCATENATE, params.multipleIn);
  enableControl(dialog, SY_MULTIPLE_OUT, !params.multipleIn);
  enableControls(dialog, {SY_PART_SIZE, SY_RECORD_BYTE, SY_RECORD_TYPE}, params.multipleOut && !params.multipleIn);
}

constexpr RealField kPartSize = {.control = SY_PART_SIZE, .decimals = 3, .low = 0, .high = 1e9, .unit = kGigabyte};

bool editCopyFlags(WINDOW dialog, const EVENT& event) {
  if (!editFlags(dialog, event, kCopyFlags, &editedCopy)) return false;
  enableCopyControls(dialog, editedCopy);
  return true;
}

void chooseSortFile(WINDOW dialog) {
  chooseFileInto({dialog, SY_SORT_PATH, &editedCopy.sortDir, &editedCopy.sortFile}, chooseFileToSave, "");
}

void editLimit(WINDOW /*dialog*/) {
  const bool polygon = limitsByPolygon(editedCopy);
  openPart(polygon ? DLG_SEGY_POLYGON : DLG_SEGY_LIST, polygon ? PolyDlg_eh : ListDlg_eh, nullptr);
}

/// The polygon's and the list's settings have dialogs of their own, which store them.
void storeCopy(WINDOW dialog) {
  editedCopy.polyParams = SgyParams.polyParams;
  editedCopy.listParams = SgyParams.listParams;
  SgyParams = editedCopy;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kCopyActions[] = {
    {SY_LIMIT, editLimit}, {SY_SORT_FILE, chooseSortFile}, {SY_OK, storeCopy}, {SY_CANCEL, xvt_vobj_destroy}};

void createCopy(WINDOW dialog) {
  editedCopy = SgyParams;
  setCopyState(dialog, &editedCopy);
}

void controlCopy(WINDOW dialog, const EVENT& event) {
  if (!editKeys(dialog, event, kCopyKeys) && !readReal(dialog, event, kPartSize, &editedCopy.bytesPerPart) &&
      !editCopyFlags(dialog, event) &&
      !chooseFromOne(dialog, event, SY_LIMIT_LIST, SY_LIMIT_POLYGON, &editedCopy.limitType))
    runAction(kCopyActions, dialog, event);
}

// ---- polygon ----------------------------------------------------------------------------------------------------

const KeyControls kPolygonKeys[] = {
    {PG_PRIMARY_BYTE, PG_PRIMARY_TYPE, &editedPolygon.primByte, &editedPolygon.primType, DataTypes},
    {PG_SECONDARY_BYTE, PG_SECONDARY_TYPE, &editedPolygon.secByte, &editedPolygon.secType, DataTypes},
};

NumberField pointsField() { return {.control = PG_POINTS, .value = &editedPolygon.numPoints, .low = 1}; }

/// A column of typed values.
struct PointColumn {
  int firstControl;
  double* values;
  const int* type;
};

const PointColumn kPointColumns[] = {
    {PG_FIRST_PRIMARY, editedPolygon.primary, &editedPolygon.primType},
    {PG_FIRST_SECONDARY, editedPolygon.secondary, &editedPolygon.secType},
};

bool editPoints(WINDOW dialog, const EVENT& event) {
  for (const PointColumn& column : kPointColumns) {
    const int row = event.ctl.id - column.firstControl;
    if (event.ctl.what != CTL_FOCUS_LOSS || row < 0 || row >= kMaxTypedPoints) continue;
    double* const value = column.values + row;
    *value = parseReal(controlText(dialog, event.ctl.id)).value_or(*value);
    setField(xvt_win_get_ctl(dialog, event.ctl.id), value, row, *column.type, &editedPolygon);
    return true;
  }
  return false;
}

void choosePolygonFile(WINDOW dialog) {
  chooseFileInto({dialog, PG_PATH, &editedPolygon.dir, &editedPolygon.file}, chooseFileToOpen, "");
}

void storePolygon(WINDOW dialog) {
  SgyParams.polyParams = editedPolygon;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kPolygonActions[] = {
    {PG_CHOOSE_FILE, choosePolygonFile}, {PG_OK, storePolygon}, {PG_CANCEL, xvt_vobj_destroy}};

void createPolygon(WINDOW dialog) {
  editedPolygon = SgyParams.polyParams;
  setPolyState(dialog, &editedPolygon);
}

void controlPolygon(WINDOW dialog, const EVENT& event) {
  if (editPoints(dialog, event)) return;
  if (editKeys(dialog, event, kPolygonKeys) || readNumber(dialog, event, pointsField()) ||
      chooseFromOne(dialog, event, PG_TYPED, PG_FROM_FILE, &editedPolygon.type) ||
      chooseFromOne(dialog, event, PG_INCLUSION, PG_EXCLUSION, &editedPolygon.polyType)) {
    if (editedPolygon.type == PS_TYPED) editedPolygon.numPoints = std::min(editedPolygon.numPoints, kMaxTypedPoints);
    setPolyState(dialog, &editedPolygon);
    return;
  }
  runAction(kPolygonActions, dialog, event);
}

// ---- list -------------------------------------------------------------------------------------------------------

const KeyControls kListKeys[] = {
    {LL_PRIMARY_BYTE, LL_PRIMARY_TYPE, &editedList.primByte, &editedList.primType, DataTypes},
    {LL_SECONDARY_BYTE, LL_SECONDARY_TYPE, &editedList.secByte, &editedList.secType, DataTypes},
};

void createList(WINDOW dialog) {
  editedList = SgyParams.listParams;
  xdCheckRadioButton(dialog, editedList.listType == LS_EXCLUSION ? LL_EXCLUSION : LL_INCLUSION, LL_INCLUSION,
                     LL_EXCLUSION);
  setLabels(dialog, editedList.listType);
  showPath(dialog, LL_PATH, editedList.dir, editedList.file);
  for (const KeyControls& key : kListKeys) showKey(dialog, key);
  checkControl(dialog, LL_USE_SECONDARY, editedList.useSec);
  enableKey(dialog, kListKeys[1], editedList.useSec);
}

void chooseListFile(WINDOW dialog) {
  chooseFileInto({dialog, LL_PATH, &editedList.dir, &editedList.file}, chooseFileToOpen, "");
}

void storeList(WINDOW dialog) {
  SgyParams.listParams = editedList;
  xvt_vobj_destroy(dialog);
}

constexpr ControlAction kListActions[] = {
    {LL_CHOOSE_FILE, chooseListFile}, {LL_OK, storeList}, {LL_CANCEL, xvt_vobj_destroy}};

void controlList(WINDOW dialog, const EVENT& event) {
  if (editKeys(dialog, event, kListKeys)) return;
  if (chooseFromOne(dialog, event, LL_INCLUSION, LL_EXCLUSION, &editedList.listType))
    setLabels(dialog, editedList.listType);
  else if (toggleFlag(dialog, event, LL_USE_SECONDARY, &editedList.useSec))
    enableKey(dialog, kListKeys[1], editedList.useSec);
  else
    runAction(kListActions, dialog, event);
}

}  // namespace

void initTypeField(WINDOW theControl, int theType) { initTypeField(theControl, theType, DataTypes); }

void setCopyState(WINDOW theDialog, const SgyCopyParams* params) {
  showFlags(theDialog, kCopyFlags, *params);
  xdCheckRadioButton(theDialog, limitsByPolygon(*params) ? SY_LIMIT_POLYGON : SY_LIMIT_LIST, SY_LIMIT_LIST,
                     SY_LIMIT_POLYGON);
  for (const KeyControls& key : kCopyKeys) showKey(theDialog, key);
  showPath(theDialog, SY_SORT_PATH, params->sortDir, params->sortFile);
  showReal(theDialog, kPartSize, params->bytesPerPart);
  enableCopyControls(theDialog, *params);
}

void setField(WINDOW theControl, double* value, int index, int fieldType, const PolyParams* params) {
  if (index >= params->numPoints) {
    *value = 0.0;
    xvt_vobj_set_title(theControl, " ");
    return;
  }
  xvt_vobj_set_title(theControl, formatText(fieldType == DT_FLOAT32 ? "%.3lf" : "%.0lf", *value).c_str());
}

void setPolyState(WINDOW theDialog, PolyParams* params) {
  xdCheckRadioButton(theDialog, params->type == PS_TYPED ? PG_TYPED : PG_FROM_FILE, PG_TYPED, PG_FROM_FILE);
  xdCheckRadioButton(theDialog, params->polyType == LS_EXCLUSION ? PG_EXCLUSION : PG_INCLUSION, PG_INCLUSION,
                     PG_EXCLUSION);
  showPath(theDialog, PG_PATH, params->dir, params->file);
  enableControls(theDialog, {PG_CHOOSE_FILE, PG_PATH}, params->type != PS_TYPED);
  showNumber(theDialog, {.control = PG_POINTS, .value = &params->numPoints});
  const KeyControls keys[] = {{PG_PRIMARY_BYTE, PG_PRIMARY_TYPE, &params->primByte, &params->primType, DataTypes},
                              {PG_SECONDARY_BYTE, PG_SECONDARY_TYPE, &params->secByte, &params->secType, DataTypes}};
  for (const KeyControls& key : keys) showKey(theDialog, key);
  for (int row = 0; row < kMaxTypedPoints; ++row) {
    const WINDOW primary = xvt_win_get_ctl(theDialog, PG_FIRST_PRIMARY + row);
    const WINDOW secondary = xvt_win_get_ctl(theDialog, PG_FIRST_SECONDARY + row);
    setField(primary, &params->primary[row], row, params->primType, params);
    setField(secondary, &params->secondary[row], row, params->secType, params);
    enableControls(theDialog, {PG_FIRST_PRIMARY + row, PG_FIRST_SECONDARY + row},
                   params->type == PS_TYPED && row < params->numPoints);
  }
}

void setLabels(WINDOW dlg, int listType) {
  const bool inclusion = listType != LS_EXCLUSION;
  setControlText(dlg, LL_FILE_LABEL, inclusion ? "Inclusion List File" : "Exclusion List File");
  setControlText(dlg, LL_KEYS_LABEL,
                 inclusion ? "Inclusion List Trace Header Fields" : "Exclusion List Trace Header Fields");
}

long SegyCpy_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createCopy, .control = controlCopy});
}

long PolyDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createPolygon, .control = controlPolygon});
}

long ListDlg_eh(WINDOW xdWindow, EVENT* xdEvent) {
  return dialogEvents(xdWindow, *xdEvent, {.create = createList, .control = controlList});
}
