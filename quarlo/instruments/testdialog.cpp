#include "quarlo/instruments/testdialog.h"

#include <limits>

#include "quarlo/common/reportdialog.h"
#include "quarlo/instruments/testframe.h"
#include "quarlo/tapelib/dialogs/savetext.h"
#include "quarlo/tapelib/dialogs/settings.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "resources/ids.h"

namespace {

FILE_SPEC valuesFile{};

// ---- fields -------------------------------------------------------------------------------------------------------

RealField fieldOf(const RealSetting& setting) {
  constexpr double kMost = std::numeric_limits<float>::max();
  return {.control = setting.control, .decimals = setting.decimals, .low = -kMost, .high = kMost};
}

void show(WINDOW dialog, const NumberField& field) { showNumber(dialog, field); }
void show(WINDOW dialog, const RealSetting& setting) { showReal(dialog, fieldOf(setting), *setting.value); }
void show(WINDOW dialog, const FlagSetting& setting) { checkControl(dialog, setting.control, *setting.value); }
void show(WINDOW dialog, const RadioSetting& setting) {
  xdCheckRadioButton(dialog, setting.first + *setting.value - 1, setting.first, setting.last);
}

bool edit(WINDOW dialog, const EVENT& event, const NumberField& field) { return readNumber(dialog, event, field); }
bool edit(WINDOW dialog, const EVENT& event, const RealSetting& setting) {
  double value = *setting.value;
  if (!readReal(dialog, event, fieldOf(setting), &value)) return false;
  *setting.value = static_cast<float>(value);
  return true;
}
bool edit(WINDOW dialog, const EVENT& event, const FlagSetting& setting) {
  return toggleFlag(dialog, event, setting.control, setting.value);
}
bool edit(WINDOW dialog, const EVENT& event, const RadioSetting& setting) {
  return chooseFromOne(dialog, event, setting.first, setting.last, setting.value);
}

// ---- buttons ------------------------------------------------------------------------------------------------------

void showOutcome(WINDOW dialog, const TestOutcome& outcome) {
  setControlText(dialog, IT_STATUS, outcome.status.c_str());
  enableControl(dialog, IT_SAVE, outcome.ended);
}

void run(WINDOW dialog, const TestDialog& test) {
  bool begun = false;
  runReport(dialog, [&](int*) {
    begun = true;
    showOutcome(dialog, {.status = "Running"});
    return test.run() == 1;
  });
  if (begun && xvt_vobj_is_valid(dialog)) showOutcome(dialog, lastOutcome());
}

void saveValues() {
  runGuarded([] {
    saveTextAs(
        &valuesFile, "csv", "Save values as:", &currentReport().inputFile,
        [](std::FILE* to) { return writeText(to, lastOutcome().values.text()); });
  });
}

void create(WINDOW dialog, const TestDialog& test) {
  testOpened(static_cast<const ReportRecord*>(xvt_vobj_get_data(dialog)));
  test.reset();
  for (const TestField& field : test.fields) std::visit([&](const auto& one) { show(dialog, one); }, field);
  showOutcome(dialog, lastOutcome());
}

void control(WINDOW dialog, const EVENT& event, const TestDialog& test) {
  for (const TestField& field : test.fields)
    if (std::visit([&](const auto& one) { return edit(dialog, event, one); }, field)) return;
  if (isPress(event, IT_RUN)) run(dialog, test);
  if (isPress(event, IT_SAVE)) saveValues();
  if (isPress(event, IT_CLOSE)) closeReport(dialog);
}

}  // namespace

long testEvents(WINDOW dialog, const EVENT& event, const TestDialog& test) {
  return reportEvents(dialog, event,
                      {.create = [&test](WINDOW made) { create(made, test); },
                       .control = [&test](WINDOW used, const EVENT& what) { control(used, what, test); },
                       .destroy = [](WINDOW) { testOpened(nullptr); }});
}
