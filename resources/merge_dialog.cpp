// Dataset merge.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kRowColumns = 74;
constexpr int kRows = 10;

constexpr DLG_ITEM kMerge[] = {
    ui::label("~Inputs, in their order:", MG_INPUTS),
    ui::multi(MG_INPUTS, "inputs", kRowColumns, kRows, IF_MONO | IF_GROW,
              "Name, type, records x traces x samples, sample interval; below stands the path of the selected one"),
    ui::value(MG_PATH, "path", kRowColumns, "", IF_GROW),
    ui::row(),
    ui::push(MG_ADD_FOLDER, "add-folder", "A~dd folder…", 0, "Add all datasets of a folder"),
    ui::push(MG_ADD_FILE, "add-file", "~Add file…", IF_FILES, "Add one dataset"),
    ui::push(MG_REMOVE, "remove", "~Remove", 0, "Take the selected inputs from the list"),
    ui::push(MG_CLEAR, "clear", "C~lear", 0, "Take all inputs from the list"),
    ui::endOf(),
    ui::card("Output"),
    ui::row(),
    ui::push(MG_OUTPUT, "output", "~Output file…", 0, "Choose the dataset to write"),
    ui::value(MG_OUTPUT_NAME, "output-name", 40, "", IF_GROW),
    ui::endOf(),
    ui::row(),
    ui::check(MG_FORCE_TYPE, "force-type", "~Force the type:", 0,
              "Otherwise the output has the type of its inputs, or is of mixed type"),
    ui::list(MG_TYPE, "type", 14, 3, IF_DISABLED, "A 2D stack is one record of live traces"),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(MG_MERGE, "merge", "~Merge", IF_DEFAULT),
    ui::push(MG_CLOSE, "close", "~Close", IF_CANCEL),
    ui::endOf(),
    ui::status(MG_STATUS, "status"),
};

constexpr DLG_RES kDialogs[] = {dialogOf(DLG_MERGE, "merge", "Dataset merge", kMerge)};

}  // namespace

constinit const std::span<const DLG_RES> kMergeDialogs = kDialogs;
