// The main panel, one button for each job, and the About box.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr DLG_ITEM kMainPanel[] = {
    ui::label("Copy and convert", 0, nullptr, IF_BOLD),
    ui::push(MAIN_IMAGE_COPY, "image-copy", "~Copy…", IF_DEFAULT,
             "Tape to disk, disk to tape, tape to tape: images, SEG Y, SEG D"),
    ui::hint("image, SEG Y, SEG D"),
    ui::push(MAIN_VERIFY, "verify", "~Verify…", 0, "Compare two copies byte for byte"),
    ui::push(MAIN_REFORMAT, "reformat", "Data ~reformat…", 0, "From one seismic format to another"),
    ui::push(MAIN_MERGE, "merge", "~Merge…", 0, "Join suite datasets into one"),
    ui::label("Look inside", 0, nullptr, IF_BOLD),
    ui::push(MAIN_TAPE_DUMP, "tape-dump", "~Tape dump…", 0, "Blocks of a tape as text or numbers"),
    ui::push(MAIN_FILE_DUMP, "file-dump", "~File dump…", 0, "Bytes of a file, tests and reports"),
    ui::push(MAIN_FILE_SCAN, "file-scan", "File ~scan…", 0, "Index a file by its trace headers"),
};

constexpr DLG_ITEM kAbout[] = {
    ui::heading("Quarlo"),
    ui::label("Tape and disk input and output for seismic data"),
    ui::row(),
    ui::label("Version:"),
    ui::value(ABOUT_VERSION, "version", 10, "", IF_BOLD),
    ui::endOf(),
    ui::label("Free software under the MIT licence, without any warranty"),
    ui::row(),
    ui::label("Pages:"),
    ui::value(ABOUT_PAGES, "pages", 40, "", IF_GROW),
    ui::endOf(),
    ui::buttons(),
    ui::push(ABOUT_HELP, "help", "~Contents of the help"),
    ui::glue(),
    ui::push(ABOUT_OK, "ok", "OK", IF_DEFAULT | IF_ESCAPE),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_MAIN, "main", "Quarlo", kMainPanel),
    dialogOf(DLG_ABOUT, "about", "About Quarlo", kAbout),
};

}  // namespace

constinit const std::span<const DLG_RES> kShellDialogs = kDialogs;
