/// The dialog of an instrument test: settings bound to controls by a table, a run into the dump window, and what came
/// of it. All tests' dialogs have the controls IT_RUN, IT_SAVE, IT_CLOSE and IT_STATUS.
#pragma once

#include <span>
#include <variant>

#include "quarlo/tapelib/dialogs/controls.h"
#include "xvt/xvt.h"

/// An edit field that shows a number with decimals.
struct RealSetting {
  int control;
  float* value;
  int decimals;
};

struct FlagSetting {
  int control;
  bool* value;
};

/// Radio buttons in a row, of which `*value` names one, from 1.
struct RadioSetting {
  int first;
  int last;
  int* value;
};

using TestField = std::variant<NumberField, RealSetting, FlagSetting, RadioSetting>;

/// A field file, trace or count: never negative.
constexpr TestField wholeSetting(int control, int* value) {
  return NumberField{.control = control, .value = value, .absolute = true};
}

/// One test. Lives as long as its dialog.
struct TestDialog {
  std::span<const TestField> fields;
  void (*reset)();  ///< puts the settings back to what a new dialog shows
  int (*run)();     ///< answers 1 for a report that was written to its end
};

/// Does what belongs to an event of a test's dialog.
long testEvents(WINDOW dialog, const EVENT& event, const TestDialog& test);
