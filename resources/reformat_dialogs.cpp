// Data reformat.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kFormatColumns = 28;
constexpr int kFormatLines = 5;

constexpr DLG_ITEM kReformat[] = {
    ui::row(IF_GROW),
    ui::card("From", IF_GROW),
    ui::label("~Input format:", RF_INPUT_FORMAT),
    ui::list(RF_INPUT_FORMAT, "input-format", kFormatColumns, kFormatLines, IF_GROW, "The format module that reads"),
    ui::push(RF_INPUT_PARAMETERS, "input-parameters", "~Parameters…", 0, "Settings of the input format"),
    ui::row(),
    ui::push(RF_INPUT_TAPE, "input-tape", "~Tape…", 0, "Choose the tape drive to read from"),
    ui::push(RF_INPUT_DISK, "input-disk", "~Disk file…", IF_FILE, "Choose the disk file to read"),
    ui::endOf(),
    ui::value(RF_INPUT_NAME, "input-name", 30, "", IF_GROW),
    ui::endOf(),
    ui::card("To", IF_GROW),
    ui::label("~Output format:", RF_OUTPUT_FORMAT),
    ui::list(RF_OUTPUT_FORMAT, "output-format", kFormatColumns, kFormatLines, IF_GROW, "The format that is written"),
    ui::push(RF_OUTPUT_PARAMETERS, "output-parameters", "Para~meters…", 0, "Settings of the output format"),
    ui::row(),
    ui::push(RF_OUTPUT_TAPE, "output-tape", "T~ape…", 0, "Choose the tape drive or drives to write to"),
    ui::push(RF_OUTPUT_DISK, "output-disk", "Disk ~file…", 0, "Choose the disk file to write"),
    ui::endOf(),
    ui::value(RF_OUTPUT_NAME, "output-name", 30, "", IF_GROW),
    ui::endOf(),
    ui::endOf(),
    ui::hint("", RF_HINT, "hint"),
    ui::buttons(),
    ui::push(RF_CHECK, "check-input", "C~heck input", 0, "Read all of the input, write nothing, tell what there is"),
    ui::push(RF_ERRORS, "errors", "~Errors…", 0, "What happens when the input cannot be read"),
    ui::glue(),
    ui::push(RF_RUN, "run", "~Run", IF_DEFAULT),
    ui::push(RF_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(RF_STATUS, "status"),
};

constexpr DLG_RES kDialogs[] = {dialogOf(DLG_REFORMAT, "reformat", "Data reformat", kReformat)};

}  // namespace

constinit const std::span<const DLG_RES> kReformatDialogs = kDialogs;
