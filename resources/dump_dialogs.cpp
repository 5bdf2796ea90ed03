// Looking inside tapes and files.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kFormatColumns = 16;
constexpr int kFormatLines = 7;
constexpr int kNumberColumns = 10;
constexpr int kPositionColumns = 16;
constexpr const char* kSignHelp = "How short and long integers are read";
constexpr const char* kOrderHelp = "Which byte of a number comes first in the data";

constexpr DLG_ITEM kTapeDump[] = {
    ui::row(),
    ui::label("Input drive:"),
    ui::value(TD_DRIVE, "drive", 38, "No drive selected", IF_BOLD | IF_GROW),
    ui::push(TD_SELECT_DRIVE, "select-drive", "S~elect drive…"),
    ui::endOf(),

    ui::row(IF_GROW),
    ui::column(IF_GROW),
    ui::label("~Format:", TD_FORMAT),
    ui::list(TD_FORMAT, "format", kFormatColumns, kFormatLines, IF_GROW, "How the bytes are shown"),
    ui::endOf(),
    ui::column(),
    ui::card("Numbers"),
    ui::grid(3),
    ui::label("Integers:"),
    ui::radio(TD_SIGNED, "signed", "S~igned", 0, kSignHelp),
    ui::radio(TD_UNSIGNED, "unsigned", "~Unsigned", 0, kSignHelp),
    ui::label("Byte order:"),
    ui::radio(TD_BIG_ENDIAN, "big-endian", "Bi~g-endian", 0, kOrderHelp),
    ui::radio(TD_LITTLE_ENDIAN, "little-endian", "~Little-endian", 0, kOrderHelp),
    ui::endOf(),
    ui::endOf(),
    ui::row(),
    ui::label("Tape mode:"),
    ui::radio(TD_TAPE_MODE_1, "tape-mode-1", "0x100000~1"),
    ui::radio(TD_TAPE_MODE_2, "tape-mode-2", "0x200000~2"),
    ui::endOf(),
    ui::endOf(),
    ui::endOf(),

    ui::card(nullptr),
    ui::grid(4),
    ui::label("Fi~rst byte:"),
    ui::edit(TD_START_BYTE, "start-byte", kNumberColumns, 0, "Counts from 0 in each block"),
    ui::label("B~ytes to show:"),
    ui::edit(TD_DUMP_BYTES, "dump-bytes", kNumberColumns, 0, "Of each block"),
    ui::label("~Blocks to dump:"),
    ui::edit(TD_READ_BLOCKS, "read-blocks", kNumberColumns, 0, "Filemarks count as blocks"),
    ui::label("Blocks to s~kip:"),
    ui::edit(TD_SKIP_BLOCKS, "skip-blocks", kNumberColumns),
    ui::endOf(),
    ui::row(),
    ui::push(TD_DUMP, "dump", "~Dump", IF_DEFAULT, "Read the next blocks and show them"),
    ui::push(TD_REDUMP, "redump", "Redu~mp", IF_DISABLED, "Show the last block again with these settings"),
    ui::push(TD_HALT, "halt", "~Halt", IF_DISABLED, "Stop behind the block that is being read"),
    ui::push(TD_SKIP_BACK, "skip-back", "Skip b~ack"),
    ui::push(TD_SKIP_FORWARD, "skip-forward", "Skip f~orward"),
    ui::endOf(),
    ui::endOf(),

    ui::buttons(),
    ui::push(TD_SHOW_WINDOW, "show-window", "Show Dump ~Window"),
    ui::glue(),
    ui::push(TD_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kFileDump[] = {
    ui::row(),
    ui::label("Input file:"),
    ui::value(FD_FILE, "file", 38, "No file selected", IF_BOLD | IF_GROW),
    ui::push(FD_OPEN, "open-file", "~Open file…", IF_FILE),
    ui::endOf(),

    ui::row(IF_GROW),
    ui::column(IF_GROW),
    ui::label("~Format:", FD_FORMAT),
    ui::list(FD_FORMAT, "format", kFormatColumns, kFormatLines, IF_GROW, "How the bytes are shown"),
    ui::endOf(),
    ui::card("Numbers"),
    ui::label("Integers:"),
    ui::row(),
    ui::radio(FD_SIGNED, "signed", "S~igned", 0, kSignHelp),
    ui::radio(FD_UNSIGNED, "unsigned", "~Unsigned", 0, kSignHelp),
    ui::endOf(),
    ui::label("Byte order:"),
    ui::row(),
    ui::radio(FD_BIG_ENDIAN, "big-endian", "Bi~g-endian", 0, kOrderHelp),
    ui::radio(FD_LITTLE_ENDIAN, "little-endian", "~Little-endian", 0, kOrderHelp),
    ui::endOf(),
    ui::endOf(),
    ui::column(IF_GROW),
    ui::label("Re~ports on a dataset:", FD_REPORTS),
    ui::list(FD_REPORTS, "reports", 20, 5, IF_GROW, "For datasets of the suite (*.kyr)"),
    ui::push(FD_START_REPORT, "start-report", "S~tart"),
    ui::endOf(),
    ui::endOf(),

    ui::card(nullptr),
    ui::grid(4),
    ui::label("Current byte:"),
    ui::value(FD_CURRENT_BYTE, "current-byte", kPositionColumns, "", IF_BOLD),
    ui::push(FD_REWIND, "rewind", "Re~wind", 0, "Go to the first byte; from the end of the file use Move to byte"),
    ui::label(""),
    ui::label("~Bytes per read:"),
    ui::edit(FD_READ_BYTES, "read-bytes", kPositionColumns, 0, "1 to 65,536"),
    ui::push(FD_READ, "read", "~Read", IF_DEFAULT, "Read the bytes that follow and show them"),
    ui::label(""),
    ui::label("Bytes to mo~ve:"),
    ui::edit(FD_SEEK_BYTES, "seek-bytes", kPositionColumns),
    ui::push(FD_MOVE_BACK, "move-back", "Move b~ack"),
    ui::push(FD_MOVE_FORWARD, "move-forward", "~Move forward"),
    ui::label("Byt~e to go to:"),
    ui::edit(FD_GO_TO_BYTE, "go-to-byte", kPositionColumns, 0, "Counts from 0"),
    ui::push(FD_MOVE_TO_BYTE, "move-to-byte", "Move to b~yte"),
    ui::label(""),
    ui::endOf(),
    ui::hint("", FD_HINT, "hint"),
    ui::endOf(),

    ui::buttons(),
    ui::push(FD_SHOW_WINDOW, "show-window", "Show ~Dump Window"),
    ui::push(FD_SAVE, "save", "~Save…", 0, "Write the text of the dump window to a file"),
    ui::glue(),
    ui::push(FD_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_TAPE_DUMP, "tape-dump", "Tape dump", kTapeDump),
    dialogOf(DLG_FILE_DUMP, "file-dump", "File dump", kFileDump),
};

}  // namespace

const std::span<const DLG_RES> kDumpDialogs(kDialogs);
