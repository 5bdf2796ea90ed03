// Reports on datasets.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM kKills[] = {
    ui::card("Dead traces to list"),
    ui::check(KR_GEOMETRY, "geometry", "~Geometry kills"),
    ui::check(KR_PROCESSING, "processing", "~Processing kills"),
    ui::check(KR_OTHER, "other", "~Other kills", 0, "Those that cannot be read and those that nobody wrote, too"),
    ui::hint("A trace counts once, for the first of these that it is.", KR_HINT, "hint"),
    ui::endOf(),
    ui::buttons(),
    ui::push(KR_RUN, "run", "R~un", IF_DEFAULT, "Write the report into the dump window"),
    ui::glue(),
    ui::push(KR_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(KR_STATUS, "status", "Ready"),
};

constexpr DLG_RES kDialogs[] = {dialogOf(DLG_KILLS_REPORT, "kills-report", "Trace kills report", kKills)};

}  // namespace

const std::span<const DLG_RES> kReportDialogs(kDialogs);
