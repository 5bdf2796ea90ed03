// Selection of the input drive and of the output drives.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kListColumns = 58;

constexpr DLG_ITEM kWaitField = ui::edit(DRV_WAIT, "wait", 3, 0, "0 to 9 minutes");
constexpr DLG_ITEM kNoRewind = ui::check(DRV_NO_REWIND, "no-rewind", "~Do not rewind at the end of the job");
constexpr DLG_ITEM kUnloadAtEot = ui::check(DRV_UNLOAD_AT_EOT, "unload-at-end", "~Unload at the end of a tape");
constexpr DLG_ITEM kAutoLoad = ui::check(DRV_AUTO_LOAD, "auto-load", "~Automatic loading of the next tape", 0,
                                         "The drive has a stacker or a loader that puts in the next tape by itself");
constexpr DLG_ITEM kWaitLabel = ui::label("~Wait before the next tape:", DRV_WAIT_LABEL);
constexpr DLG_ITEM kWaitUnit = ui::label("minutes", DRV_WAIT_UNIT);
constexpr DLG_ITEM kOk = ui::push(DRV_OK, "ok", "OK", IF_DEFAULT);
constexpr DLG_ITEM kCancel = ui::push(DRV_CANCEL, "cancel", "Cancel", IF_CANCEL);

constexpr DLG_ITEM kInputDrive[] = {
    ui::label("Drives by host and ~id:"),
    ui::list(DRV_LIST, "drives", kListColumns, 7, IF_MONO | IF_GROW),
    ui::card("At the end"),
    kNoRewind,
    kUnloadAtEot,
    kAutoLoad,
    ui::row(),
    kWaitLabel,
    kWaitField,
    kWaitUnit,
    ui::endOf(),
    ui::endOf(),
    ui::card("Drive model"),
    ui::check(DRV_OVERRIDE_MODEL, "override-model", "O~verride model detection", 0,
              "Normally the drive's name decides whether it can read blocks over 64,000 bytes"),
    ui::row(),
    ui::radio(DRV_MODEL_FAMILY, "model-family", "~M4 family, reads limited to 64,000 bytes"),
    ui::radio(DRV_MODEL_OTHER, "model-other", "Any othe~r"),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    kOk,
    kCancel,
    ui::endOf(),
    ui::status(DRV_STATUS, "status"),
};

constexpr DLG_ITEM kOutputDrive[] = {
    ui::label("Drives by host and ~id:"),
    ui::stack(IF_GROW),
    ui::list(DRV_LIST, "drives", kListColumns, 3, IF_MONO | IF_GROW),
    ui::multi(DRV_MULTIPLE_LIST, "several-drives", kListColumns, 3, IF_MONO | IF_GROW | IF_HIDDEN),
    ui::endOf(),
    ui::card("Outputs"),
    ui::check(DRV_MULTIPLE, "multiple", "~Several drives"),
    ui::hint("Every block is written to each drive selected.", DRV_MULTIPLE_LABEL),
    ui::endOf(),
    ui::card("At the end"),
    kNoRewind,
    kUnloadAtEot,
    kAutoLoad,
    ui::row(),
    kWaitLabel,
    kWaitField,
    kWaitUnit,
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    kOk,
    kCancel,
    ui::endOf(),
    ui::status(DRV_STATUS, "status"),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_INPUT_DRIVE, "input-drive", "Select input drive", kInputDrive),
    dialogOf(DLG_OUTPUT_DRIVE, "output-drive", "Select output drive", kOutputDrive),
};

}  // namespace

constinit const std::span<const DLG_RES> kDriveDialogs = kDialogs;
