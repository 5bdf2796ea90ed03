// Settings of the SEG D copy: options, field file list, zero trace list.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kPathColumns = 24;

constexpr DLG_ITEM pathValue(int id, const char* name) { return ui::value(id, name, kPathColumns, "", IF_GROW); }

constexpr DLG_ITEM kSegdItems[] = {
    ui::card("Field files"),
    ui::grid(3),
    ui::check(SD_LIMIT, "limit", "~Keep or drop listed field files"),
    ui::push(SD_LIMIT_LIST, "limit-list", "~Field file list…", 0,
             "Which field files, and whether they are kept or dropped"),
    pathValue(SD_LIMIT_PATH, "limit-path"),
    ui::check(SD_ZERO_TRACES, "zero-traces", "~Zero listed traces (from disk only)", 0,
              "Their samples become zero; the headers and the number of traces stay"),
    ui::push(SD_ZERO_LIST, "zero-list", "Zero ~trace list…", 0,
             "Which traces, and where their number stands in the trace header"),
    pathValue(SD_ZERO_PATH, "zero-path"),
    ui::endOf(),
    ui::endOf(),
    ui::row(),
    ui::card("Lengths, when the input is on disk", IF_GROW),
    ui::grid(3),
    ui::check(SD_LENGTH_OVERRIDE, "override-length-unit", "Set the ~unit of record lengths:", 0,
              "Only for recorders that do not count in tenths of 1.024 s; the wrong unit gives wrong trace lengths"),
    ui::edit(SD_LENGTH_UNIT, "length-unit", 6, 0, "1.0240 as SEG D has it; 1.0000 when tenths of a second are counted"),
    ui::label("seconds", SD_LENGTH_UNIT),
    ui::span(3, ui::check(SD_USE_CHANNEL_SETS, "use-channel-sets", "Take t~race lengths from the channel set headers",
                          0, "For channel sets that begin or end within the record, or are sampled more often")),
    ui::endOf(),
    ui::endOf(),
    ui::card("Output to disk"),
    ui::row(),
    ui::label("Na~mes begin with:", SD_OUTPUT_NAME),
    ui::edit(SD_OUTPUT_NAME, "output-name", 8, IF_GROW,
             "line makes line_00001.sgd, line_00002.sgd and so on; empty: the chosen file's name"),
    ui::endOf(),
    ui::check(SD_NUMBER_BY_FILE, "number-by-field-file", "~Number files by field file", 0,
              "line_01234.sgd for field file 1234; otherwise the first file is 1, skipped ones count"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Output to tape"),
    ui::grid(3),
    ui::span(3, ui::check(SD_BLOCK_TRACES, "block-traces", "~Pack the traces of a channel set into blocks", 0,
                          "Blocks of up to 131,072 bytes; without this each trace is a block")),
    ui::check(SD_LIMIT_BYTES, "limit-bytes", "Ne~xt tape when more is written than", 0,
              "Asks for the next tape behind the field file that went over the limit"),
    ui::edit(SD_BYTE_LIMIT, "byte-limit", 9, 0, "1 GB is 1,073,741,824 bytes"),
    ui::label("GB", SD_BYTE_LIMIT),
    ui::check(SD_PREPEND, "prepend", "~Begin the first tape with a disk file", 0, "It becomes a tape file of its own"),
    ui::push(SD_PREPEND_FILE, "prepend-file", "~Disk file…", IF_FILE),
    pathValue(SD_PREPEND_PATH, "prepend-path"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Messages"),
    ui::grid(3),
    ui::check(SD_USE_LOG, "use-log", "~Write all messages to a log file, too"),
    ui::push(SD_LOG_FILE, "log-file", "~Log file…"),
    pathValue(SD_LOG_PATH, "log-path"),
    ui::check(SD_DECIMATE, "decimate", "On the ~console show only one in"),
    ui::edit(SD_DECIMATE_INTERVAL, "decimate-interval", 6, 0, "The log has a line for every field file"),
    ui::label("field files", SD_DECIMATE_INTERVAL),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(SD_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SD_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kFilesItems[] = {
    ui::card("Field files in the list"),
    ui::row(),
    ui::radio(SF_INCLUSION, "inclusion", "are ~kept"),
    ui::radio(SF_EXCLUSION, "exclusion", "are ~dropped"),
    ui::endOf(),
    ui::endOf(),
    ui::row(),
    ui::push(SF_CHOOSE_FILE, "choose-file", "~List file…", IF_FILE),
    ui::value(SF_PATH, "path", kPathColumns, "", IF_GROW),
    ui::endOf(),
    ui::hint("One field file number a line, or a range such as 10 - 12 with blanks around the dash."),
    ui::buttons(),
    ui::glue(),
    ui::push(SF_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SF_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kZeroItems[] = {
    ui::row(),
    ui::push(ZT_CHOOSE_FILE, "choose-file", "~List file…", IF_FILE),
    ui::value(ZT_PATH, "path", kPathColumns, "", IF_GROW),
    ui::endOf(),
    ui::hint("One value a line, or a range such as 10 - 12 with blanks around the dash."),
    ui::card("Field of the trace header that is looked up in the list"),
    ui::grid(2),
    ui::label("First ~byte:", ZT_BYTE),
    ui::edit(ZT_BYTE, "byte", 6, 0, "Position in the 20-byte trace header, counted from 1"),
    ui::label("~Type:", ZT_TYPE),
    ui::option(ZT_TYPE, "type", 15, 0, "How the field is read: 1 byte with sign, or 2 or 3 bytes, big-endian"),
    ui::endOf(),
    ui::hint("The trace number stands in bytes 5 and 6, as decimal digits: trace 12 reads as 18 (hexadecimal 12)."),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(ZT_OK, "ok", "OK", IF_DEFAULT),
    ui::push(ZT_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_SEGD, "segd", "SEG D copy options", kSegdItems),
    dialogOf(DLG_SEGD_FILES, "segd-files", "Field file list", kFilesItems),
    dialogOf(DLG_SEGD_ZERO, "segd-zero", "Zero trace list", kZeroItems),
};

}  // namespace

const std::span<const DLG_RES> kSegdDialogs(kDialogs);
