#include "plugins/segd/input_dlg.h"

#include <array>

#include "plugins/fieldfiles.h"
#include "plugins/tapecounts.h"
#include "quarlo/tapelib/dialogs/blockdialog.h"

namespace {

enum CONTROL : int {
  DI_FOLDER = 1,
  DI_VOLTS,
  DI_RAW,
  DI_AUXILIARY,
  DI_PAD,
  DI_SETS,
  DI_OK,
  DI_CANCEL,
  DI_TAPE,
  DI_FIELD_FILES = DI_TAPE + kTapeControls  // and what follows
};

constexpr int kListColumns = 30;

constexpr std::array kReading = {
    ui::card("Input"),
    ui::check(DI_FOLDER, "whole-folder", "All SEG D files of the ~folder", 0,
              "In the order of their names, beside the one that was chosen"),
    ui::endOf(),

    ui::card("Values"),
    ui::row(),
    ui::radio(DI_VOLTS, "volts", "~Volts", 0, "The descaling factor of the channel set applied"),
    ui::radio(DI_RAW, "raw", "As ~recorded"),
    ui::endOf(),
    ui::endOf(),

    ui::card("Channel sets"),
    ui::check(DI_AUXILIARY, "auxiliary", "~Auxiliary channel sets as well"),
    ui::check(DI_PAD, "pad", "Fill ~shorter traces with zeros", 0, "Otherwise traces of another length are left out"),
    ui::grid(2),
    ui::label("~Only these sets:"),
    ui::edit(DI_SETS, "sets", kListColumns, 0, "Numbers of channel sets; empty for all"),
    ui::endOf(),
    ui::endOf(),

};

constexpr std::array kButtons = {
    ui::buttons(),
    ui::glue(),
    ui::push(DI_OK, "ok", "OK", IF_DEFAULT),
    ui::push(DI_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr auto kItems = joinedItems(kReading, tapeCountsCard(DI_TAPE), fieldFilesCard(DI_FIELD_FILES), kButtons);
constexpr DLG_RES kDialog = {0, "segd-input", "SEG D input", kItems.data(), kItems.size()};

}  // namespace

void editSegdInput(KyrSegdInput* block) {
  KyrSegdInput edited = *block;
  BlockDialog dialog(kDialog, DI_OK, DI_CANCEL);
  dialog.flag(DI_FOLDER, &edited.wholeFolder)
      .radio(DI_VOLTS, DI_RAW, &edited.raw)
      .flag(DI_AUXILIARY, &edited.auxiliary)
      .flag(DI_PAD, &edited.pad)
      .numbers(DI_SETS, edited.setList, KYR_SEGD_SETS, &edited.sets);
  bindTapeCounts(&dialog, DI_TAPE, &edited.tape);
  bindFieldFiles(&dialog, DI_FIELD_FILES, &edited.fieldFiles);
  dialog.follow([&edited](WINDOW window) { followFieldFiles(window, DI_FIELD_FILES, edited.fieldFiles); });
  if (dialog.run()) *block = edited;
}
