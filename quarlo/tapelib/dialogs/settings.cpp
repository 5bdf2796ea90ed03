#include "quarlo/tapelib/dialogs/settings.h"

#include <cmath>
#include <cstdlib>

#include "libkyr/files.h"
#include "libkyr/text.h"

namespace {

NumberField byteField(const KeyControls& key) {
  return {.control = key.byteControl, .value = key.byte, .low = 1, .high = key.lastByte};
}

}  // namespace

void initTypeField(WINDOW theControl, int theType, std::span<const char* const> types) {
  xvt_list_clear(theControl);
  for (const char* name : types) xvt_list_add(theControl, -1, name);
  if (theType >= 0 && theType < static_cast<int>(types.size())) xvt_list_set_selected(theControl, theType, true);
}

void showKey(WINDOW dialog, const KeyControls& key) {
  showNumber(dialog, byteField(key));
  const WINDOW list = xvt_win_get_ctl(dialog, key.typeControl);
  if (list != NULL_WIN) initTypeField(list, *key.type, key.types);
}

void enableKey(WINDOW dialog, const KeyControls& key, bool enabled) {
  enableControls(dialog, {key.byteControl, key.typeControl}, enabled);
}

bool editKey(WINDOW dialog, const EVENT& event, const KeyControls& key) {
  if (readNumber(dialog, event, byteField(key))) return true;
  if (event.ctl.what != CTL_SELECT || event.ctl.id != key.typeControl) return false;
  const int row = xvt_list_get_selected(xvt_win_get_ctl(dialog, key.typeControl));
  if (row >= 0 && row < static_cast<int>(key.types.size())) *key.type = row;
  return true;
}

bool editKeys(WINDOW dialog, const EVENT& event, std::span<const KeyControls> keys) {
  for (const KeyControls& key : keys)
    if (editKey(dialog, event, key)) return true;
  return false;
}

bool chooseFromOne(WINDOW dialog, const EVENT& event, int first, int last, int* setting) {
  int place = 0;
  if (!chooseRadio(dialog, event, first, last, &place)) return false;
  *setting = place + 1;
  return true;
}

std::optional<double> parseReal(const std::string& text) {
  const std::string trimmed(trimText(text));
  char* end = nullptr;
  const double value = std::strtod(trimmed.c_str(), &end);
  if (end == trimmed.c_str() || !std::isfinite(value)) return std::nullopt;
  return value;
}

void showReal(WINDOW dialog, const RealField& field, double value) {
  setControlText(dialog, field.control, formatText("%.*f", field.decimals, value / field.unit).c_str());
}

bool readReal(WINDOW dialog, const EVENT& event, const RealField& field, double* value) {
  if (event.ctl.what != CTL_FOCUS_LOSS || event.ctl.id != field.control) return false;
  const std::optional<double> typed = parseReal(controlText(dialog, field.control));
  if (typed && *typed >= field.low && *typed <= field.high) *value = *typed * field.unit;
  showReal(dialog, field, *value);
  return true;
}

void chooseFileInto(const FileField& field, FileChooser choose, const char* extension) {
  FILE_SPEC file{};
  if (!trimText(fieldText(*field.directory)).empty())  // some settings say "none" with a blank
    copyText(file.dir.path, fieldText(*field.directory));
  copyText(file.name, fieldText(*field.name));
  if (!choose(&file, extension, "Select File")) return;
  PathField chosenDirectory;
  PathField chosenName;
  if (!copyText(chosenDirectory, fieldText(file.dir.path)) || !copyText(chosenName, fieldText(file.name))) {
    xvt_dm_post_error("Error getting file name.");
    return;
  }
  copyText(*field.directory, fieldText(chosenDirectory));
  copyText(*field.name, fieldText(chosenName));
  showPath(field.dialog, field.pathControl, *field.directory, *field.name);
}

void showPath(WINDOW dialog, int control, const PathField& directory, const PathField& name) {
  setControlText(dialog, control,
                 name[0] != '\0' ? joinPath(fieldText(directory), fieldText(name)).c_str() : "No file chosen");
}

void openPart(int resource, EVENT_HANDLER handler, void* data) {
  if (xvt_dlg_create_res(WD_MODAL, resource, handler, data) == NULL_WIN) xvt_dm_post_error("Can't open dialog");
}
