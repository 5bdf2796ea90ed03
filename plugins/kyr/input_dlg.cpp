#include "plugins/kyr/input_dlg.h"

#include <iterator>
#include <limits>

#include "quarlo/tapelib/dialogs/blockdialog.h"

namespace {

enum CONTROL : int { KI_FIRST = 1, KI_LAST, KI_OK, KI_CANCEL };

constexpr int kColumns = 12;
constexpr int kMost = std::numeric_limits<int>::max();

constexpr DLG_ITEM kItems[] = {
    ui::card("Records"),
    ui::grid(2),
    ui::label("~First record:"),
    ui::edit(KI_FIRST, "first-record", kColumns, 0, "Records are counted from 1"),
    ui::label("~Last record:"),
    ui::edit(KI_LAST, "last-record", kColumns, 0, "0 for the last one of the dataset"),
    ui::endOf(),
    ui::endOf(),

    ui::buttons(),
    ui::glue(),
    ui::push(KI_OK, "ok", "OK", IF_DEFAULT),
    ui::push(KI_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialog = {1101, "dataset-input", "Dataset input", kItems, std::size(kItems)};

}  // namespace

void editDatasetInput(KyrDatasetInput* block) {
  KyrDatasetInput edited = *block;
  BlockDialog dialog(kDialog, KI_OK, KI_CANCEL);
  dialog.number(KI_FIRST, &edited.firstRecord, 1, kMost).number(KI_LAST, &edited.lastRecord, 0, kMost);
  if (dialog.run()) *block = edited;
}
