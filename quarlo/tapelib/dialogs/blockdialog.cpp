#include "quarlo/tapelib/dialogs/blockdialog.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/dialogevents.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/tlv_fcn.h"

BlockDialog& BlockDialog::number(int control, int* value, int low, int high) {
  single_.push_back({.control = control, .value = value, .low = low, .high = high});
  return *this;
}

BlockDialog& BlockDialog::real(const RealField& field, double* value) {
  reals_.push_back({field, value});
  return *this;
}

BlockDialog& BlockDialog::numbers(int control, int* values, int most, int* count) {
  numbers_.push_back({control, values, most, count});
  return *this;
}

BlockDialog& BlockDialog::flag(int control, int* value) {
  flags_.push_back({control, value});
  return *this;
}

BlockDialog& BlockDialog::choice(int control, int* value, std::span<const Choice> choices) {
  options_.push_back({control, value, choices});
  return *this;
}

BlockDialog& BlockDialog::radio(int first, int last, int* value) {
  radios_.push_back({first, last, value});
  return *this;
}

BlockDialog& BlockDialog::file(File file) {
  files_.push_back(std::move(file));
  return *this;
}

BlockDialog& BlockDialog::follow(std::function<void(WINDOW dialog)> does) {
  follow_ = std::move(does);
  return *this;
}

bool BlockDialog::run() {
  stored_ = false;
  if (xvt_dlg_create_table(WD_MODAL, &table_, handle, this) == NULL_WIN) xvt_dm_post_error("Error opening dialog");
  return stored_;
}

long BlockDialog::handle(WINDOW dialog, EVENT* event) {
  auto* const self = static_cast<BlockDialog*>(xvt_vobj_get_data(dialog));
  if (self == nullptr) return 0;
  return dialogEvents(dialog, *event,
                      {.create = [self](WINDOW window) { self->show(window); },
                       .control = [self](WINDOW window, const EVENT& what) { self->control(window, what); }});
}

// ---- showing ----------------------------------------------------------------------------------------------------

void BlockDialog::show(WINDOW dialog) {
  for (const NumberField& field : single_) showNumber(dialog, field);
  for (const Real& real : reals_) showReal(dialog, real.field, *real.value);
  for (const Numbers& field : numbers_) showNumbers(dialog, field);
  for (const Flag& flag : flags_) checkControl(dialog, flag.control, *flag.value != 0);
  for (const Radio& group : radios_) xdCheckRadioButton(dialog, group.first + *group.value, group.first, group.last);
  for (const Option& option : options_) {
    std::vector<const char*> rows;
    for (const Choice& choice : option.choices) rows.push_back(choice.shown);
    const auto chosen = std::ranges::find(option.choices, *option.value, &Choice::value);
    fillList(dialog, option.control, rows, static_cast<int>(chosen - option.choices.begin()));
  }
  for (const File& file : files_) showFile(dialog, file);
  if (follow_) follow_(dialog);
}

void BlockDialog::showFile(WINDOW dialog, const File& file) const {
  setControlText(dialog, file.shown, file.path[0] != '\0' ? file.path : file.none);
  if (file.clear != 0) enableControl(dialog, file.clear, file.path[0] != '\0');
}

// ---- events -----------------------------------------------------------------------------------------------------

void BlockDialog::control(WINDOW dialog, const EVENT& event) {
  stored_ = isPress(event, ok_);
  if (stored_ || isPress(event, cancel_))
    xvt_vobj_destroy(dialog);
  else if (edit(dialog, event) && follow_)
    follow_(dialog);
}

/// @return whether a field may have changed
bool BlockDialog::edit(WINDOW dialog, const EVENT& event) {
  const auto any = [](const auto& fields, const auto& takes) { return std::ranges::any_of(fields, takes); };
  return any(single_, [&](const NumberField& field) { return readNumber(dialog, event, field); }) ||
         any(reals_, [&](const Real& real) { return readReal(dialog, event, real.field, real.value); }) ||
         any(numbers_, [&](const Numbers& field) { return takeNumbers(dialog, event, field); }) ||
         any(flags_, [&](const Flag& flag) { return toggleFlag(dialog, event, flag.control, flag.value); }) ||
         any(radios_,
             [&](const Radio& group) { return chooseRadio(dialog, event, group.first, group.last, group.value); }) ||
         any(options_, [&](const Option& option) { return takeChoice(dialog, event, option); }) ||
         any(files_, [&](const File& file) { return takeFile(dialog, event, file); });
}

void BlockDialog::showNumbers(WINDOW dialog, const Numbers& field) const {
  std::string text;
  for (int i = 0; i < *field.count; ++i) text += (i > 0 ? " " : "") + std::to_string(field.values[i]);
  setControlText(dialog, field.control, text.c_str());
}

/// Read as number fields are, when the field loses the keyboard.
bool BlockDialog::takeNumbers(WINDOW dialog, const EVENT& event, const Numbers& field) const {
  if (event.ctl.id != field.control || event.ctl.what != CTL_FOCUS_LOSS) return false;
  const std::string text = controlText(dialog, field.control);
  *field.count = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end && *field.count < field.most;) {
    const auto [next, error] = std::from_chars(at, end, field.values[*field.count]);
    if (error == std::errc()) ++*field.count;
    at = next > at ? next : at + 1;
  }
  showNumbers(dialog, field);
  return true;
}

bool BlockDialog::takeChoice(WINDOW dialog, const EVENT& event, const Option& option) const {
  if (event.ctl.id != option.control || event.ctl.what != CTL_SELECT) return false;
  const int row = xvt_list_get_selected(xvt_win_get_ctl(dialog, option.control));
  if (row >= 0 && static_cast<std::size_t>(row) < option.choices.size())
    *option.value = option.choices[static_cast<std::size_t>(row)].value;
  return true;
}

bool BlockDialog::takeFile(WINDOW dialog, const EVENT& event, const File& file) const {
  const std::span<char> field(file.path, file.size);
  if (file.clear != 0 && isPress(event, file.clear)) {
    field[0] = '\0';
  } else if (isPress(event, file.button)) {
    FILE_SPEC chosen = fileSpecOf(file.path);
    if (!chooseFileToOpen(&chosen, file.extension, file.title)) return true;
    const std::string path = pathOf(chosen);
    const std::string why = file.why ? file.why(path) : "";
    if (!why.empty())
      xvt_dm_post_error("%s", why.c_str());
    else if (!copyText(field.data(), field.size(), path))
      xvt_dm_post_error("The path of file %s is too long.", chosen.name);
  } else {
    return false;
  }
  showFile(dialog, file);
  return true;
}
