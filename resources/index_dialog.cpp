// File scan.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM kFileScan[] = {
    ui::card("Input", IF_GROW),
    ui::label("~Format:", FS_FORMAT),
    ui::list(FS_FORMAT, "format", 34, 5, IF_GROW, "SEG Y files and datasets can be indexed"),
    ui::row(),
    ui::push(FS_PARAMETERS, "parameters", "~Parameters…", 0, "Settings of the input format"),
    ui::push(FS_INPUT, "input", "~Disk file…", IF_FILE, "Choose the file to scan"),
    ui::endOf(),
    ui::value(FS_INPUT_NAME, "input-name", 56, "", IF_GROW),
    ui::endOf(),
    ui::card("Beside the index file"),
    ui::row(),
    ui::check(FS_TABLE, "table", "~Trace table (CSV)", 0, "A line for every trace, dead ones too"),
    ui::push(FS_TABLE_FILE, "table-file", "F~ile…", IF_DISABLED, "Choose where the table is written"),
    ui::endOf(),
    ui::value(FS_TABLE_NAME, "table-name", 56, "", IF_GROW),
    ui::endOf(),
    ui::hint("", FS_HINT, "hint"),
    ui::buttons(),
    ui::glue(),
    ui::push(FS_RUN, "run", "~Run", IF_DEFAULT),
    ui::push(FS_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(FS_STATUS, "status"),
};

constexpr DLG_RES kDialogs[] = {dialogOf(DLG_FILE_SCAN, "file-scan", "File scan", kFileScan)};

}  // namespace

constinit const std::span<const DLG_RES> kIndexDialogs = kDialogs;
