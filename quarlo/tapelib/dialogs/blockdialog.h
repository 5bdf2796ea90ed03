/// The parameter dialog of a format module: a table of xvt/resource.h whose controls are bound to the fields of a
/// parameter block, one helper for each kind of control. A module edits a copy of its block and keeps it when run()
/// says so. How a module of one's own does it: docs/format-modules.md.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "quarlo/tapelib/dialogs/controls.h"
#include "quarlo/tapelib/dialogs/settings.h"
#include "xvt/resource.h"

/// The tag: as that of DLG_RES, for modules that have their dialogs from here.
class [[gnu::abi_tag("stamped")]] BlockDialog {
 public:
  /// One row of an option list: what is shown, and the value that it stands for.
  struct Choice {
    const char* shown;
    int value;
  };
  /// A path that a button asks for and another takes back.
  struct File {
    int button;
    int clear;  ///< takes the path back; 0 for none
    int shown;  ///< where the path stands
    char* path;
    std::size_t size;
    const char* extension;
    const char* title;                                             ///< of the file box
    const char* none;                                              ///< shown without a path
    std::function<std::string(const std::string& path)> why = {};  ///< why a file cannot be used; empty when it can
  };

  /// @param table,ok,cancel outlive the dialog; the numbers of its two buttons
  BlockDialog(const DLG_RES& table, int ok, int cancel) : table_(table), ok_(ok), cancel_(cancel) {}

  // The fields live as long as this object.
  BlockDialog& number(int control, int* value, int low, int high);
  /// A number with decimals, in a unit of its own.
  BlockDialog& real(const RealField& field, double* value);
  /// A list of numbers in an edit field, separated by blanks; what is no number there is left out.
  /// @param values room for `most` of them @param count how many there are
  BlockDialog& numbers(int control, int* values, int most, int* count);
  BlockDialog& flag(int control, int* value);
  BlockDialog& choice(int control, int* value, std::span<const Choice> choices);
  /// The radio buttons from `first` to `last`: their place in the group, from 0.
  BlockDialog& radio(int first, int last, int* value);
  BlockDialog& file(File file);
  /// What is done when the dialog opens and after every change: enabling what the rest asks for.
  BlockDialog& follow(std::function<void(WINDOW dialog)> does);

  /// Shows the dialog, modal, and waits for its end. @return whether the user pressed OK
  bool run();

 private:
  struct Numbers {
    int control;
    int* values;
    int most;
    int* count;
  };
  struct Real {
    RealField field;
    double* value;
  };
  struct Flag {
    int control;
    int* value;
  };
  struct Option {
    int control;
    int* value;
    std::span<const Choice> choices;
  };
  struct Radio {
    int first;
    int last;
    int* value;
  };

  static long handle(WINDOW dialog, EVENT * event);
  void show(WINDOW dialog);
  void showFile(WINDOW dialog, const File& file) const;
  void control(WINDOW dialog, const EVENT& event);
  bool edit(WINDOW dialog, const EVENT& event);
  void showNumbers(WINDOW dialog, const Numbers& field) const;
  bool takeNumbers(WINDOW dialog, const EVENT& event, const Numbers& field) const;
  bool takeChoice(WINDOW dialog, const EVENT& event, const Option& option) const;
  bool takeFile(WINDOW dialog, const EVENT& event, const File& file) const;

  const DLG_RES& table_;
  int ok_;
  int cancel_;
  std::vector<NumberField> single_;
  std::vector<Real> reals_;
  std::vector<Numbers> numbers_;
  std::vector<Flag> flags_;
  std::vector<Option> options_;
  std::vector<Radio> radios_;
  std::vector<File> files_;
  std::function<void(WINDOW dialog)> follow_;
  bool stored_ = false;
};
