#include "plugins/segy/input_dlg.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "libkyr/text.h"
#include "plugins/fieldfiles.h"
#include "plugins/segy/description.h"
#include "plugins/tapecounts.h"
#include "quarlo/tapelib/dialogs/blockdialog.h"

namespace {

enum CONTROL : int {
  SI_DESCRIPTION = 1,
  SI_DESCRIPTION_PATH,
  SI_STANDARD,
  SI_TEXT,
  SI_ORDER,
  SI_FORMAT,
  SI_RECORDS,
  SI_TRACES,
  SI_GRID,
  SI_OK,
  SI_CANCEL,
  SI_TAPE,
  SI_FIELD_FILES = SI_TAPE + kTapeControls  // and what follows
};

constexpr int kChoiceColumns = 28;
constexpr int kPathColumns = 40;

constexpr std::array kReading = {
    ui::card("Headers"),
    ui::row(),
    ui::push(SI_DESCRIPTION, "description", "~Description…", 0, "Which value stands where in the headers"),
    ui::push(SI_STANDARD, "standard", "~Standard"),
    ui::value(SI_DESCRIPTION_PATH, "description-path", kPathColumns),
    ui::endOf(),
    ui::grid(2),
    ui::label("Text ~header:"),
    ui::option(SI_TEXT, "text", kChoiceColumns),
    ui::label("~Byte order:"),
    ui::option(SI_ORDER, "byte-order", kChoiceColumns),
    ui::label("Sample ~format:"),
    ui::option(SI_FORMAT, "format", kChoiceColumns),
    ui::endOf(),
    ui::check(SI_GRID, "grid-lines", "CMP ~line and location from inline and crossline", 0,
              "Otherwise the CMP location is the ensemble number"),
    ui::endOf(),

    ui::card("Records"),
    ui::grid(2),
    ui::label("A ~new record:"),
    ui::option(SI_RECORDS, "records", kChoiceColumns, 0, "Check input tells how many records each would make"),
    ui::label("~Traces a record:"),
    ui::edit(SI_TRACES, "traces", 8),
    ui::endOf(),
    ui::endOf(),
};

constexpr std::array kButtons = {
    ui::buttons(),
    ui::glue(),
    ui::push(SI_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SI_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr auto kItems = joinedItems(kReading, tapeCountsCard(SI_TAPE), fieldFilesCard(SI_FIELD_FILES), kButtons);
constexpr DLG_RES kDialog = {1100, "segy-input", "SEG Y input", kItems.data(), kItems.size()};

constexpr BlockDialog::Choice kTexts[] = {
    {"Told apart", KYR_TEXT_TOLD_APART}, {"EBCDIC", KYR_TEXT_EBCDIC}, {"ASCII", KYR_TEXT_ASCII}};
constexpr BlockDialog::Choice kOrders[] = {
    {"As the file says", KYR_ORDER_DESCRIBED}, {"Big-endian", KYR_ORDER_BIG}, {"Little-endian", KYR_ORDER_LITTLE}};
constexpr BlockDialog::Choice kFormats[] = {{"As the file says", 0},
                                            {"1: IBM floats", 1},
                                            {"2: 4-byte integers", 2},
                                            {"3: 2-byte integers", 3},
                                            {"5: IEEE floats", 5},
                                            {"6: IEEE doubles", 6},
                                            {"7: 3-byte integers", 7},
                                            {"8: 1-byte integers", 8},
                                            {"10: unsigned 4-byte integers", 10},
                                            {"11: unsigned 2-byte integers", 11},
                                            {"12: unsigned 8-byte integers", 12},
                                            {"15: unsigned 3-byte integers", 15},
                                            {"16: unsigned 1-byte integers", 16}};

// The rules of records: a field that changes, by its place here, or one of the two behind them.
constexpr std::array<const char*, 6> kRecordFields = {"FieldFile", "SourcePoint", "Ensemble",
                                                      "Inline",    "Crossline",   "ShotPoint"};
constexpr int kOtherField = -1;
constexpr int kEverySoMany = 6;
constexpr int kAllInOne = 7;
constexpr BlockDialog::Choice kRules[] = {{"where the field file changes", 0},    {"where the source point changes", 1},
                                          {"where the ensemble changes", 2},      {"where the inline changes", 3},
                                          {"where the crossline changes", 4},     {"where the shot point changes", 5},
                                          {"every so many traces", kEverySoMany}, {"none: all are one", kAllInOne}};

int ruleOf(const KyrSegyInput& block) {
  const std::string_view field = fieldText(block.recordField);
  if (field.empty()) return block.tracesPerRecord > 0 ? kEverySoMany : kAllInOne;
  const auto* const found = std::ranges::find(kRecordFields, field);
  return found != kRecordFields.end() ? static_cast<int>(found - kRecordFields.begin()) : kOtherField;
}

void setRule(KyrSegyInput* block, int rule) {
  if (rule == kOtherField) return;
  copyText(block->recordField, rule < kEverySoMany ? kRecordFields[static_cast<std::size_t>(rule)] : "");
  if (rule != kEverySoMany) block->tracesPerRecord = 0;
}

}  // namespace

void editSegyInput(KyrSegyInput* block) {
  KyrSegyInput edited = *block;
  int rule = ruleOf(edited);
  int traces = std::max(1, edited.tracesPerRecord);
  BlockDialog dialog(kDialog, SI_OK, SI_CANCEL);
  dialog
      .file({SI_DESCRIPTION, SI_STANDARD, SI_DESCRIPTION_PATH, edited.description, sizeof edited.description, "txt",
             "Format description", "All revisions", whyNoDescription})
      .choice(SI_TEXT, &edited.text, kTexts)
      .choice(SI_ORDER, &edited.byteOrder, kOrders)
      .choice(SI_FORMAT, &edited.sampleFormat, kFormats)
      .flag(SI_GRID, &edited.gridLines)
      .choice(SI_RECORDS, &rule, kRules)
      .number(SI_TRACES, &traces, 1, std::numeric_limits<int>::max());
  bindTapeCounts(&dialog, SI_TAPE, &edited.tape);
  bindFieldFiles(&dialog, SI_FIELD_FILES, &edited.fieldFiles);
  dialog.follow([&](WINDOW window) {
    enableControl(window, SI_TRACES, rule == kEverySoMany);
    followFieldFiles(window, SI_FIELD_FILES, edited.fieldFiles);
  });
  if (!dialog.run()) return;
  edited.tracesPerRecord = traces;
  setRule(&edited, rule);
  *block = edited;
}
