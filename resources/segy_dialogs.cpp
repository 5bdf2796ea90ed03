// Settings of the SEG Y copy: options, range limit by polygon, range limit by list.
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr const char* kByteHelp = "First byte of the field in the 240-byte trace header, counted from 1";
constexpr const char* kTypeHelp =
    "How the field is stored: a signed integer of 1, 2 or 4 bytes, or a 4-byte IEEE float; big-endian";
constexpr int kByteColumns = 6;
constexpr int kTypeColumns = 15;
constexpr int kPathColumns = 40;

constexpr DLG_ITEM byteField(int id, const char* name) { return ui::edit(id, name, kByteColumns, 0, kByteHelp); }
constexpr DLG_ITEM typeField(int id, const char* name) { return ui::option(id, name, kTypeColumns, 0, kTypeHelp); }

constexpr DLG_ITEM kSegyItems[] = {
    ui::card("Range limit"),
    ui::row(),
    ui::check(SY_RANGE_LIMIT, "range-limit", "Li~mit traces by their header values"),
    ui::radio(SY_LIMIT_LIST, "limit-by-list", "by ~list", 0, "Keep or drop the values of a list file"),
    ui::radio(SY_LIMIT_POLYGON, "limit-by-polygon", "by ~polygon", 0,
              "Keep or drop what lies in a polygon of two header values"),
    ui::glue(),
    ui::push(SY_LIMIT, "limit-settings", "List or poly~gon…"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Sort"),
    ui::check(SY_SORT, "sort", "~Sort the traces"),
    ui::grid(3),
    ui::label("Primary key, b~yte:", SY_PRIMARY_BYTE),
    byteField(SY_PRIMARY_BYTE, "sort-primary-byte"),
    typeField(SY_PRIMARY_TYPE, "sort-primary-type"),
    ui::label("Se~condary key, byte:", SY_SECONDARY_BYTE),
    byteField(SY_SECONDARY_BYTE, "sort-secondary-byte"),
    typeField(SY_SECONDARY_TYPE, "sort-secondary-type"),
    ui::check(SY_TERTIARY, "sort-tertiary", "~Tertiary key, byte:", 0,
              "Order traces of equal primary and secondary values too"),
    byteField(SY_TERTIARY_BYTE, "sort-tertiary-byte"),
    typeField(SY_TERTIARY_TYPE, "sort-tertiary-type"),
    ui::span(3, ui::check(SY_REVERSE, "sort-reverse", "Re~verse order: largest values first")),
    ui::endOf(),
    ui::row(),
    ui::push(SY_SORT_FILE, "sort-file", "Temporary ~file…", 0, "Needs the room of all traces that are kept"),
    ui::value(SY_SORT_PATH, "sort-path", kPathColumns, "", IF_GROW),
    ui::check(SY_KEEP_SORT_FILE, "keep-sort-file", "~Keep it after the job"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Inputs and outputs"),
    ui::row(),
    ui::check(SY_MULTIPLE_IN, "multiple-inputs", "Several ~inputs", 0,
              "All *.sgy files of the input's folder, or all SEG Y files on the input tapes"),
    ui::check(SY_CONCATENATE, "join-inputs", "~Join them into one output", 0,
              "Without this each input gets an output of its own"),
    ui::glue(),
    ui::check(SY_REPORT_FILES, "report-field-files", "List field file ~numbers on the console"),
    ui::endOf(),
    ui::row(),
    ui::check(SY_MULTIPLE_OUT, "multiple-outputs", "Split the ~output every", 0,
              "Volumes end where the record key changes"),
    ui::edit(SY_PART_SIZE, "part-size", 9, 0, "Size of a volume; 1 GB is 1,073,741,824 bytes"),
    ui::label("G~B, record key at byte:", SY_RECORD_BYTE),
    byteField(SY_RECORD_BYTE, "record-byte"),
    typeField(SY_RECORD_TYPE, "record-type"),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(SY_OK, "ok", "OK", IF_DEFAULT),
    ui::push(SY_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr const char* kPointHelp = "A corner of the polygon: its value of this key";

constexpr DLG_ITEM pointField(int id, const char* name) { return ui::edit(id, name, 14, 0, kPointHelp); }

#define POLYGON_HEAD                                                            \
  ui::label("Point", PG_FIRST_PRIMARY), ui::label("Primary", PG_FIRST_PRIMARY), \
      ui::label("Secondary", PG_FIRST_SECONDARY)
#define POLYGON_ROW(NUMBER, TEXT)                                                                                \
  ui::label(TEXT, PG_FIRST_PRIMARY + (NUMBER)-1), pointField(PG_FIRST_PRIMARY + (NUMBER)-1, "primary-" #NUMBER), \
      pointField(PG_FIRST_SECONDARY + (NUMBER)-1, "secondary-" #NUMBER)

constexpr DLG_ITEM kPolygonItems[] = {
    ui::row(),
    ui::card("Points"),
    ui::radio(PG_TYPED, "typed", "~Typed below", 0, "The log of kept values goes to the folder of the program"),
    ui::radio(PG_FROM_FILE, "from-file", "From a ~file", 0,
              "First the number of points, then a line with both values for each"),
    ui::endOf(),
    ui::card("Traces within the polygon"),
    ui::radio(PG_INCLUSION, "inclusion", "are ~kept"),
    ui::radio(PG_EXCLUSION, "exclusion", "are ~dropped"),
    ui::endOf(),
    ui::endOf(),
    ui::row(),
    ui::push(PG_CHOOSE_FILE, "choose-file", "~Polygon file…", IF_FILE),
    ui::value(PG_PATH, "path", kPathColumns, "", IF_GROW),
    ui::endOf(),
    ui::card("Trace header fields"),
    ui::grid(3),
    ui::label("P~rimary key (x), byte:", PG_PRIMARY_BYTE),
    byteField(PG_PRIMARY_BYTE, "primary-byte"),
    typeField(PG_PRIMARY_TYPE, "primary-type"),
    ui::label("~Secondary key (y), byte:", PG_SECONDARY_BYTE),
    byteField(PG_SECONDARY_BYTE, "secondary-byte"),
    typeField(PG_SECONDARY_TYPE, "secondary-type"),
    ui::endOf(),
    ui::endOf(),
    ui::card("Typed points"),
    ui::row(),
    ui::label("~Number of points:", PG_POINTS),
    ui::edit(PG_POINTS, "points", kByteColumns, 0, "1 to 10 points can be typed; the polygon closes by itself"),
    ui::endOf(),
    ui::row(),
    ui::grid(3),
    POLYGON_HEAD,
    POLYGON_ROW(1, "1"),
    POLYGON_ROW(2, "2"),
    POLYGON_ROW(3, "3"),
    POLYGON_ROW(4, "4"),
    POLYGON_ROW(5, "5"),
    ui::endOf(),
    ui::grid(3),
    POLYGON_HEAD,
    POLYGON_ROW(6, "6"),
    POLYGON_ROW(7, "7"),
    POLYGON_ROW(8, "8"),
    POLYGON_ROW(9, "9"),
    POLYGON_ROW(10, "10"),
    ui::endOf(),
    ui::endOf(),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(PG_OK, "ok", "OK", IF_DEFAULT),
    ui::push(PG_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

#undef POLYGON_HEAD
#undef POLYGON_ROW

constexpr DLG_ITEM kListItems[] = {
    ui::card("Traces whose values are in the list"),
    ui::row(),
    ui::radio(LL_INCLUSION, "inclusion", "are ~kept"),
    ui::radio(LL_EXCLUSION, "exclusion", "are ~dropped"),
    ui::endOf(),
    ui::endOf(),
    ui::label("Inclusion List File", LL_FILE_LABEL, "file-title", IF_BOLD),
    ui::row(),
    ui::push(LL_CHOOSE_FILE, "choose-file", "~List file…", IF_FILE,
             "One entry a line: a value, or a range such as 10 - 20; then the secondary value or range"),
    ui::value(LL_PATH, "path", kPathColumns, "", IF_GROW),
    ui::endOf(),
    ui::label("Inclusion List Trace Header Fields", LL_KEYS_LABEL, "keys-title", IF_BOLD),
    ui::grid(3),
    ui::label("~Primary key, byte:", LL_PRIMARY_BYTE),
    byteField(LL_PRIMARY_BYTE, "primary-byte"),
    typeField(LL_PRIMARY_TYPE, "primary-type"),
    ui::check(LL_USE_SECONDARY, "use-secondary", "~Secondary key, byte:", 0, "The list's lines have a second value"),
    byteField(LL_SECONDARY_BYTE, "secondary-byte"),
    typeField(LL_SECONDARY_TYPE, "secondary-type"),
    ui::endOf(),
    ui::buttons(),
    ui::glue(),
    ui::push(LL_OK, "ok", "OK", IF_DEFAULT),
    ui::push(LL_CANCEL, "cancel", "Cancel", IF_CANCEL),
    ui::endOf(),
};

constexpr DLG_RES kDialogs[] = {
    dialogOf(DLG_SEGY, "segy", "SEG Y copy options", kSegyItems),
    dialogOf(DLG_SEGY_POLYGON, "segy-polygon", "Range limit polygon", kPolygonItems),
    dialogOf(DLG_SEGY_LIST, "segy-list", "Range limit list", kListItems),
};

}  // namespace

const std::span<const DLG_RES> kSegyDialogs(kDialogs);
