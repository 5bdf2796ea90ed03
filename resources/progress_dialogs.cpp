// The progress of a running job, and the error options.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kValueColumns = 30;

constexpr DLG_ITEM kProgress[] = {
    ui::heading("Progress", PROG_HEADING, "heading"),
    ui::grid(2),
    ui::value(PROG_FIRST_LABEL, "first-label", 22),
    ui::value(PROG_FIRST_VALUE, "first-value", kValueColumns, "", IF_BOLD),
    ui::stack(),
    ui::value(PROG_SECOND_LABEL, "second-label", 22, "", IF_HIDDEN),
    ui::value(PROG_METER_LABEL, "percent-label", 22, "Percent of input:", IF_HIDDEN),
    ui::endOf(),
    ui::stack(),
    ui::value(PROG_SECOND_VALUE, "second-value", kValueColumns, "", IF_BOLD | IF_HIDDEN),
    ui::value(PROG_METER_VALUE, "percent-value", kValueColumns, "", IF_BOLD | IF_HIDDEN),
    ui::endOf(),
    ui::value(PROG_PACE_LABEL, "pace-label", 22, "So far:"),
    ui::value(PROG_PACE, "pace", kValueColumns),
    ui::value(PROG_ELAPSED_LABEL, "elapsed-label", 22, "Time elapsed:"),
    ui::value(PROG_ELAPSED, "elapsed", kValueColumns),
    ui::value(PROG_LEFT_LABEL, "left-label", 22, "Time left:", IF_HIDDEN),
    ui::value(PROG_LEFT, "left", kValueColumns, "", IF_HIDDEN),
    ui::endOf(),
    ui::meter(PROG_BAR, "bar", 52, IF_HIDDEN | IF_BOLD),
    ui::meter(PROG_METER, "meter", 52, IF_HIDDEN),
    ui::buttons(),
    ui::glue(),
    ui::push(PROG_STOP, "stop", "~Stop", IF_CANCEL, "Ends the job after the block that is being copied"),
    ui::endOf(),
};

constexpr DLG_ITEM kErrorOptions[] = {
    ui::card("When the input tape cannot be read"),
    ui::check(ERR_STOP_ON_ERROR, "stop-on-error", "~Stop the job at the first read error"),
    ui::hint("Otherwise a bad block is tried again five times, then skipped.", ERR_HINT, "hint"),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(ERR_OK, "ok", "OK", IF_DEFAULT),
    ui::push(ERR_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_PROGRESS, "progress", "Progress", kProgress),
    dialogOf(DLG_ERROR_OPTIONS, "error-options", "Error options", kErrorOptions),
};

}  // namespace

constinit const std::span<const DLG_RES> kProgressDialogs = kDialogs;
