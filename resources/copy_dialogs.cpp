#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM kCopyItems[] = {
    ui::grid(3, IF_GROW),
    ui::push(CP_INPUT_TAPE, "input-tape", "~Input tape…", 0, "Choose the tape drive to copy from"),
    ui::push(CP_INPUT_DISK, "input-disk", "Input ~disk…", IF_FILE, "Choose the disk file to copy from"),
    ui::value(CP_INPUT_NAME, "input-name", 36, "", IF_GROW),
    ui::push(CP_OUTPUT_TAPE, "output-tape", "~Output tape…", 0, "Choose the tape drive or drives to copy to"),
    ui::push(CP_OUTPUT_DISK, "output-disk", "Output disk ~file…", 0, "Choose the disk file to write"),
    ui::value(CP_OUTPUT_NAME, "output-name", 36, "", IF_GROW),
    ui::endOf(),
    ui::row(),
    ui::column(),
    ui::label("Fo~rmat:", CP_FORMAT),
    ui::list(CP_FORMAT, "format", 18, 3, 0, "What the data are taken for"),
    ui::endOf(),
    ui::column(),
    ui::label("Settings", 0, nullptr, IF_BOLD),
    ui::push(CP_PARAMETERS, "parameters", "~Parameters…", 0, "Settings of the chosen format"),
    ui::push(CP_ERROR_OPTIONS, "error-options", "~Error options…", 0, "What happens when a block cannot be read"),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(CP_START, "start", "~Start", IF_DEFAULT),
    ui::push(CP_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(CP_STATUS, "status"),
};

constexpr DLG_ITEM kUnformattedItems[] = {
    ui::row(),
    ui::card("Disk output"),
    ui::radio(UF_TPF, "tape-image", "~Tape image with headers (tpf)", 0, "Keeps block lengths and filemarks"),
    ui::radio(UF_RAW, "raw", "~Raw bytes, first file only", 0,
              "The blocks one after another; the first filemark ends the tape"),
    ui::endOf(),
    ui::card("Block type"),
    ui::radio(UF_BLOCK_TYPE_1, "block-type-1", "0x100000~1 (reads limited to 60,000 bytes)", IF_DISABLED),
    ui::radio(UF_BLOCK_TYPE_2, "block-type-2", "0x200000~2", IF_DISABLED),
    ui::endOf(),
    ui::endOf(),
    ui::row(),
    ui::label("~Filemarks that end a tape:", UF_EOF_COUNT),
    ui::edit(UF_EOF_COUNT, "eof-count", 8, 0, "Consecutive filemarks behind which nothing more is read"),
    ui::endOf(),
    ui::card("Options"),
    ui::check(UF_CONCATENATE, "concatenate", "Co~ncatenate tapes: the first filemark ends each input tape"),
    ui::check(UF_ONE_FOR_ONE, "one-for-one", "One output tape for ~each input tape"),
    ui::check(UF_PRINT_FILES, "print-files", "~List files and tapes on the console"),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(UF_OK, "ok", "OK", IF_DEFAULT),
    ui::push(UF_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_ITEM kVerifyItems[] = {
    ui::grid(3, IF_GROW),
    ui::push(VF_FIRST_TAPE, "first-tape", "~First tape…", 0, "Choose a tape drive as first input"),
    ui::push(VF_FIRST_DISK, "first-disk", "First ~disk…", IF_FILE, "Choose a tape-image file as first input"),
    ui::value(VF_FIRST_NAME, "first-name", 36, "", IF_GROW),
    ui::push(VF_SECOND_TAPE, "second-tape", "~Second tape…", 0, "Choose a tape drive as second input"),
    ui::push(VF_SECOND_DISK, "second-disk", "S~econd disk…", IF_FILE, "Choose a tape-image file as second input"),
    ui::value(VF_SECOND_NAME, "second-name", 36, "", IF_GROW),
    ui::endOf(),
    ui::card("Block type"),
    ui::radio(VF_BLOCK_TYPE_1, "block-type-1", "0x100000~1 (reads limited to 60,000 bytes)"),
    ui::radio(VF_BLOCK_TYPE_2, "block-type-2", "0x200000~2"),
    ui::endOf(),
    ui::check(VF_CONCATENATED, "concatenated",
              "C~oncatenated copy: the first filemark ends each tape of the first input"),
    ui::buttons(),
    ui::glue(),
    ui::push(VF_START, "start", "S~tart", IF_DEFAULT),
    ui::push(VF_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(VF_STATUS, "status"),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_COPY, "copy", "Copy", kCopyItems),
    dialogOf(DLG_VERIFY, "verify", "Verify", kVerifyItems),
    dialogOf(DLG_UNFORMATTED, "unformatted", "Unformatted copy parameters", kUnformattedItems),
};

}  // namespace

const std::span<const DLG_RES> kCopyDialogs(kDialogs);
