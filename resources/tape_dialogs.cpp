// Handling tapes by hand: control, spacing, the next tape of a job, the warning about a tape's position.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kCountColumns = 8;
constexpr const char* kBackward = "A negative count spaces backward.";

constexpr DLG_ITEM kTapeControl[] = {
    ui::card("Input drive"),
    ui::row(),
    ui::value(TC_DRIVE, "drive", 38, "", IF_BOLD | IF_GROW),
    ui::push(TC_SELECT_DRIVE, "select-drive", "~Select drive…"),
    ui::endOf(),
    ui::grid(4),
    ui::label("File:"),
    ui::value(TC_FILE_NUMBER, "file-number", 9),
    ui::label("Smallest block:"),
    ui::value(TC_MIN_BLOCK, "smallest-block", 12),
    ui::label("Block:"),
    ui::value(TC_BLOCK_NUMBER, "block-number", 9),
    ui::label("Largest block:"),
    ui::value(TC_MAX_BLOCK, "largest-block", 12),
    ui::endOf(),
    ui::endOf(),

    ui::card("Position"),
    ui::grid(3),
    ui::label("B~locks:"),
    ui::edit(TC_BLOCK_COUNT, "block-count", kCountColumns, 0, kBackward),
    ui::push(TC_SKIP_BLOCKS, "skip-blocks", "Skip ~blocks", IF_ENTER),
    ui::label("F~iles:"),
    ui::edit(TC_FILE_COUNT, "file-count", kCountColumns, 0, kBackward),
    ui::push(TC_SKIP_FILES, "skip-files", "Skip ~files", IF_ENTER),
    ui::endOf(),
    ui::hint(kBackward),
    ui::row(),
    ui::push(TC_REWIND, "rewind", "~Rewind"),
    ui::push(TC_SKIP_EOD, "skip-to-end-of-data", "To ~end of data"),
    ui::push(TC_WRITE_EOF, "write-filemark", "~Write filemark", 0,
             "The input is opened for reading, so the drive refuses; copies write filemarks to their output tapes"),
    ui::push(TC_UNLOAD, "unload", "~Unload"),
    ui::endOf(),
    ui::endOf(),

    ui::buttons(),
    ui::glue(),
    ui::push(TC_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kSkipFiles[] = {
    ui::row(),
    ui::label("~Files to skip:"),
    ui::edit(SKIP_COUNT, "count", kCountColumns),
    ui::endOf(),
    ui::hint(kBackward),
    ui::buttons(),
    ui::glue(),
    ui::push(SKIP_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SKIP_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kSkipRecords[] = {
    ui::row(),
    ui::label("~Blocks to skip:"),
    ui::edit(SKIP_COUNT, "count", kCountColumns),
    ui::endOf(),
    ui::hint(kBackward),
    ui::buttons(),
    ui::glue(),
    ui::push(SKIP_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SKIP_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kInContinue[] = {
    ui::heading("The input tape has ended"),
    ui::hint("Put in the next tape and open the drive, then continue; or stop.", IC_HINT, "hint"),
    ui::card("Drive"),
    ui::grid(2),
    ui::label("Name:"),
    ui::value(IC_DRIVE, "drive", 36, "", IF_BOLD),
    ui::label("State:"),
    ui::value(IC_STATUS, "status", 12),
    ui::endOf(),
    ui::row(),
    ui::push(IC_SELECT_DRIVE, "select-drive", "Select ~drive…"),
    ui::push(IC_OPEN, "open", "~Open"),
    ui::push(IC_REWIND, "rewind", "~Rewind", 0, "Rewinds the tape and closes the drive"),
    ui::push(IC_UNLOAD, "unload", "~Unload"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Position"),
    ui::grid(3),
    ui::label("F~iles:"),
    ui::edit(IC_FILE_COUNT, "file-count", kCountColumns, 0, kBackward),
    ui::push(IC_SKIP_FILES, "skip-files", "Skip ~files", IF_ENTER),
    ui::label("B~locks:"),
    ui::edit(IC_BLOCK_COUNT, "block-count", kCountColumns, 0, kBackward),
    ui::push(IC_SKIP_BLOCKS, "skip-blocks", "Skip ~blocks", IF_ENTER),
    ui::endOf(),
    ui::hint(kBackward),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(IC_CONTINUE, "continue", "~Continue", IF_DEFAULT, "The next tape is ready"),
    ui::push(IC_STOP, "stop", "~Stop", 0, "There is no further tape"),
    ui::endOf(),
};

constexpr DLG_ITEM kOutContinue[] = {
    ui::heading("The output needs its next tape"),
    ui::hint("Put in the next tape and open the drive, then continue; or stop.", OC_HINT, "hint"),
    ui::card("Drive"),
    ui::grid(2),
    ui::label("Name:"),
    ui::value(OC_DRIVE, "drive", 36, "", IF_BOLD),
    ui::label("State:"),
    ui::value(OC_STATUS, "status", 12),
    ui::endOf(),
    ui::row(),
    ui::push(OC_SELECT_DRIVE, "select-drive", "Select ~drive…"),
    ui::push(OC_OPEN, "open", "~Open"),
    ui::push(OC_REWIND, "rewind", "~Rewind", 0, "Rewinds the tape and closes the drive"),
    ui::push(OC_UNLOAD, "unload", "~Unload"),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(OC_CONTINUE, "continue", "~Continue", IF_DEFAULT, "The next tape is ready"),
    ui::push(OC_STOP, "stop", "~Stop", 0, "There is no further tape"),
    ui::endOf(),
};

constexpr DLG_ITEM kTapePosition[] = {
    ui::heading("This tape is not at its beginning", TP_HEADING, "heading"),
    ui::value(TP_DRIVE, "drive", 40, "", IF_BOLD),
    ui::hint("The job starts where the tape stands unless you rewind it now.", TP_HINT, "hint"),
    ui::buttons(),
    ui::push(TP_REWIND, "rewind", "~Rewind"),
    ui::glue(),
    ui::push(TP_OK, "ok", "OK", IF_DEFAULT | IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_TAPE_CONTROL, "tape-control", "Tape control", kTapeControl),
    dialogOf(DLG_SKIP_FILES, "skip-files", "Skip files", kSkipFiles),
    dialogOf(DLG_SKIP_RECORDS, "skip-records", "Skip blocks", kSkipRecords),
    dialogOf(DLG_IN_CONTINUE, "input-continue", "Next input tape", kInContinue),
    dialogOf(DLG_OUT_CONTINUE, "output-continue", "Next output tape", kOutContinue),
    dialogOf(DLG_TAPE_POSITION, "tape-position", "Tape position", kTapePosition),
};

}  // namespace

constinit const std::span<const DLG_RES> kTapeDialogs = kDialogs;
