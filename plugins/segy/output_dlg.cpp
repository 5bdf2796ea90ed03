#include "plugins/segy/output_dlg.h"

#include <iterator>

#include "plugins/segy/description.h"
#include "quarlo/tapelib/dialogs/blockdialog.h"

namespace {

enum CONTROL : int {
  SO_FORMAT = 1,
  SO_ORDER,
  SO_DESCRIPTION,
  SO_DESCRIPTION_PATH,
  SO_STANDARD,
  SO_TEXT,
  SO_TEXT_PATH,
  SO_GENERATED,
  SO_DEAD,
  SO_STRIP,
  SO_OK,
  SO_CANCEL
};

constexpr int kPathColumns = 40;

constexpr DLG_ITEM kItems[] = {
    ui::card("Samples"),
    ui::grid(2),
    ui::label("Sample ~format:"),
    ui::option(SO_FORMAT, "format", 24, 0,
               "Integers get a weighting factor that keeps as much of each trace as they can"),
    ui::label("~Byte order:"),
    ui::option(SO_ORDER, "byte-order", 24, 0, "SEG Y asks for big-endian"),
    ui::endOf(),
    ui::endOf(),

    ui::card("Headers"),
    ui::grid(3),
    ui::push(SO_DESCRIPTION, "description", "~Description…", 0, "Which value stands where in the headers"),
    ui::push(SO_STANDARD, "standard", "~Standard"),
    ui::value(SO_DESCRIPTION_PATH, "description-path", kPathColumns),
    ui::push(SO_TEXT, "text-file", "~Text header…", 0, "A file whose first 3200 bytes become the text header"),
    ui::push(SO_GENERATED, "generated", "~Generated"),
    ui::value(SO_TEXT_PATH, "text-path", kPathColumns),
    ui::endOf(),
    ui::endOf(),

    ui::card("Traces"),
    ui::check(SO_DEAD, "dead-traces", "Write d~ead traces", 0, "With the trace identification 2"),
    ui::check(SO_STRIP, "strip-auxiliary", "Leave ~auxiliary traces out", 0, "Those whose identification is above 2"),
    ui::endOf(),

    ui::buttons(),
    ui::glue(),
    ui::push(SO_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SO_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialog = {0, "segy-output", "SEG Y output", kItems, std::size(kItems)};

constexpr BlockDialog::Choice kFormats[] = {
    {"IEEE floats", 5}, {"IBM floats", 1}, {"4-byte integers", 2}, {"2-byte integers", 3}};
constexpr BlockDialog::Choice kOrders[] = {
    {"As described", KYR_ORDER_DESCRIBED}, {"Big-endian", KYR_ORDER_BIG}, {"Little-endian", KYR_ORDER_LITTLE}};

}  // namespace

void editSegyOutput(KyrSegyOutput* block) {
  KyrSegyOutput edited = *block;
  BlockDialog dialog(kDialog, SO_OK, SO_CANCEL);
  dialog.choice(SO_FORMAT, &edited.sampleFormat, kFormats)
      .choice(SO_ORDER, &edited.byteOrder, kOrders)
      .file({SO_DESCRIPTION, SO_STANDARD, SO_DESCRIPTION_PATH, edited.description, sizeof edited.description, "txt",
             "Format description", "SEG Y revision 1", whyNoDescription})
      .file({SO_TEXT, SO_GENERATED, SO_TEXT_PATH, edited.textFile, sizeof edited.textFile, "txt", "Text header",
             "Tells what was done"})
      .flag(SO_DEAD, &edited.deadTraces)
      .flag(SO_STRIP, &edited.stripAuxiliary);
  if (dialog.run()) *block = edited;
}
