// The main panel, one button for each job, and the About box.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM mainPanel[] = {
    ui::card(nullptr),
    ui::grid(2),
    ui::span(2, ui::label("Copy", 0, nullptr, IF_BOLD)),
    ui::push(MAIN_IMAGE_COPY, "image-copy", "~Image copy…", IF_DEFAULT),
    ui::hint("Tape to disk, disk to tape, tape to tape"),
    ui::push(MAIN_VERIFY, "verify", "~Verify…"),
    ui::hint("Compare two copies byte for byte"),
    ui::push(MAIN_REFORMAT, "reformat", "Data ~reformat…"),
    ui::hint("From one seismic format to another"),
    ui::push(MAIN_MERGE, "merge", "~Merge…"),
    ui::hint("Join suite datasets into one"),
    ui::span(2, ui::label("Look inside", 0, nullptr, IF_BOLD)),
    ui::push(MAIN_TAPE_DUMP, "tape-dump", "~Tape dump…"),
    ui::hint("Blocks of a tape as text or numbers"),
    ui::push(MAIN_FILE_DUMP, "file-dump", "~File dump…"),
    ui::hint("Bytes of a file, tests and reports"),
    ui::push(MAIN_FILE_SCAN, "file-scan", "File ~scan…"),
    ui::hint("Index a file by its trace headers"),
    ui::endOf(),
    ui::endOf(),
};

constexpr DLG_ITEM about[] = {
    ui::heading("Quarlo"),
    ui::label("Tape and disk input and output for seismic data"),
    ui::row(),
    ui::label("Version"),
    ui::value(ABOUT_VERSION, "version", 10, "", IF_BOLD),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(ABOUT_OK, "ok", "~OK", IF_DEFAULT | IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES dialogs[] = {
    dialogOf(DLG_MAIN, "main", "Quarlo", mainPanel),
    dialogOf(DLG_ABOUT, "about", "About Quarlo", about),
};

}  // namespace

constinit const std::span<const DLG_RES> shellDialogs = dialogs;
