/// Binding a dialog's controls to settings: one helper for each kind of control.
///
/// Every function takes the dialog and a control's number; a number the dialog does not have is passed over.
#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>

#include "xvt/xvt.h"

// ---- showing ----------------------------------------------------------------------------------------------------

void setControlText(WINDOW dialog, int control, const char* text);
void setControlNumber(WINDOW dialog, int control, long value);
/// The text of an edit field, value or label; of any length that a line of text has.
std::string controlText(WINDOW dialog, int control);
/// As much of a window's title as its frame might show.
std::string windowTitle(WINDOW window);
void enableControl(WINDOW dialog, int control, bool enabled);
void enableControls(WINDOW dialog, std::initializer_list<int> controls, bool enabled);
void showControl(WINDOW dialog, int control, bool visible);
void showControls(WINDOW dialog, std::initializer_list<int> controls, bool visible);
void checkControl(WINDOW dialog, int control, bool checked);

// ---- pressing ---------------------------------------------------------------------------------------------------

/// What a button does.
struct ControlAction {
  int control;
  void (*act)(WINDOW dialog);
};

/// True when the event says that this control was pressed.
bool isPress(const EVENT& event, int control);

/// True when the event says that the user did something, and not only that the keyboard went to a field or left it.
bool isAction(const EVENT& event);

/// Runs the action of the control that was pressed. @return whether there was one
bool runAction(std::span<const ControlAction> actions, WINDOW dialog, const EVENT& event);

// ---- number fields ----------------------------------------------------------------------------------------------

/// An edit field that holds a whole number. Its text is read when it loses the focus: leading digits count, a text
/// without digits is 0; the value is made positive if wished, kept within the limits and written back.
struct NumberField {
  int control;
  int* value;
  int low = -std::numeric_limits<int>::max();  ///< so that the value can always be negated
  int high = std::numeric_limits<int>::max();
  bool absolute = false;
};

/// The number that such a field makes of a text.
int parseNumber(const char* text, const NumberField& field);
void showNumber(WINDOW dialog, const NumberField& field);
/// Reads the field if the event is its loss of focus. @return whether it was
bool readNumber(WINDOW dialog, const EVENT& event, const NumberField& field);

// ---- check boxes and radio groups -------------------------------------------------------------------------------

/// Flips a setting and shows it, if the event is a press on its check box. @return whether it was
template <typename Flag>
bool toggleFlag(WINDOW dialog, const EVENT& event, int control, Flag* flag) {
  if (!isPress(event, control)) return false;
  *flag = static_cast<Flag>(*flag ? 0 : 1);
  checkControl(dialog, control, *flag != 0);
  return true;
}

/// The radio buttons `first` to `last` of a group: true when the event is a press on one of them, which is then checked
/// and stored in `*chosen` as its place in the group, from 0.
bool chooseRadio(WINDOW dialog, const EVENT& event, int first, int last, int* chosen);

// ---- lists ------------------------------------------------------------------------------------------------------

/// Fills a list or option list and selects row `selected` (-1: none).
void fillList(WINDOW dialog, int control, std::span<const char* const> rows, int selected);

// ---- files ------------------------------------------------------------------------------------------------------

/// A file that was dropped on the button is the answer, and no box is opened; otherwise asks for a file to open or to
/// write, proposing an extension ("" for none) and starting in `file->dir` if that is not empty. A box that fails says
/// "Error getting file name.". @return true when `*file` holds the choice; else it is unchanged
bool chooseFileToOpen(FILE_SPEC* file, const char* extension, const char* title);
bool chooseFileToSave(FILE_SPEC* file, const char* extension, const char* title);
/// Asks for a folder by any file in it, existing or not, or by itself: the name is empty then.
bool chooseFolderByFile(FILE_SPEC* file, const char* extension, const char* title);
/// Asks for a folder, starting in `*folder` if that is not empty. A box that fails says "Error getting folder name.".
bool chooseFolder(DIRECTORY* folder, const char* title);

// ---- dialogs ----------------------------------------------------------------------------------------------------

/// Opens a modal dialog and waits for its end. @return false after the box "Error opening dialog"
bool runModal(int resource, EVENT_HANDLER handler, void* data);
