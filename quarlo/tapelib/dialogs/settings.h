/// What the dialogs of settings share: header keys, numbers with decimals, files.
///
/// As the helpers of controls.h: each reads its control's event, keeps the value within its limits and shows it again.
#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/path_field.h"
#include "xvt/xvt.h"

// ---- header keys ------------------------------------------------------------------------------------------------

/// A field of a header: the position of its first byte, from 1, and its data type, a row of `types`.
struct KeyControls {
  int byteControl;
  int typeControl;
  int* byte;
  int* type;
  std::span<const char* const> types;              ///< names of the data types, in the order of their codes
  int lastByte = std::numeric_limits<int>::max();  ///< largest position
};

/// Fills an option list with data types and selects row `theType`; none when there is no such row.
void initTypeField(WINDOW theControl, int theType, std::span<const char* const> types);

void showKey(WINDOW dialog, const KeyControls& key);
void enableKey(WINDOW dialog, const KeyControls& key, bool enabled);
/// @return whether the event was one of the key's controls
bool editKey(WINDOW dialog, const EVENT& event, const KeyControls& key);
bool editKeys(WINDOW dialog, const EVENT& event, std::span<const KeyControls> keys);

// ---- check boxes and radio buttons ------------------------------------------------------------------------------

/// A check box and the flag of a record that it shows.
template <typename Record>
struct FlagControl {
  int control;
  bool Record::*flag;
};

template <typename Record, std::size_t N>
void showFlags(WINDOW dialog, const FlagControl<Record> (&flags)[N], const Record& record) {
  for (const auto& [control, flag] : flags) checkControl(dialog, control, record.*flag);
}

/// @return whether the event was a press on one of the check boxes
template <typename Record, std::size_t N>
bool editFlags(WINDOW dialog, const EVENT& event, const FlagControl<Record> (&flags)[N], Record* record) {
  for (const auto& [control, flag] : flags)
    if (toggleFlag(dialog, event, control, &(record->*flag))) return true;
  return false;
}

/// As chooseRadio, for a setting that counts from 1.
bool chooseFromOne(WINDOW dialog, const EVENT& event, int first, int last, int* setting);

// ---- numbers with decimals --------------------------------------------------------------------------------------

/// The number that a text begins with, if there is one and it is finite.
std::optional<double> parseReal(const std::string& text);

/// An edit field whose text is in a unit of its own: gigabytes for a value in bytes.
struct RealField {
  int control;
  int decimals;
  double low;  ///< limits of the text's number
  double high;
  double unit = 1.0;  ///< value of a text that says 1
};

void showReal(WINDOW dialog, const RealField& field, double value);
/// Reads the field if the event is its loss of focus. A text that is no number within the limits leaves the value as it
/// was. @return whether it was that event
bool readReal(WINDOW dialog, const EVENT& event, const RealField& field, double* value);

// ---- files ------------------------------------------------------------------------------------------------------

using FileChooser = bool (*)(FILE_SPEC* file, const char* extension, const char* title);

/// A file of the settings, and the control that shows its path.
struct FileField {
  WINDOW dialog;
  int pathControl;
  PathField* directory;
  PathField* name;
};

/// Asks for a file, proposing the one that is set, and shows what is set then. What has no room in the fields is
/// refused with a box.
void chooseFileInto(const FileField& field, FileChooser choose, const char* extension);
/// Shows the joined path; nothing while no file is set.
void showPath(WINDOW dialog, int control, const PathField& directory, const PathField& name);

/// Opens a dialog that edits a part of another's settings; the box "Can't open dialog" when that fails.
void openPart(int resource, EVENT_HANDLER handler, void* data);
