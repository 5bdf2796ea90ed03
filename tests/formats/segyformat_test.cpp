// Format descriptions: the bounds check, the text form both ways, the shipped ones, the lists in dialogs.

#include "quarlo/tapelib/formats/segyformat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>

#include "libkyr/text.h"
#include "quarlo/tapelib/dialogs/segyfields_dlg.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/formats/segyformat_text.h"
#include "tests/support/test_files.h"
#include "tests/support/test_toolkit.h"

namespace {

constexpr const char* firstLine = "Quarlo SEG Y format, version 1, readable from 1\n";

SegyField* add(SegyFormat* format, const char* name, int type, int offset, bool isBinary = true) {
  SegyField field;
  copyText(field.itsName, name);
  copyText(field.itsDescription, std::string("the ") + name);
  field.itsType = static_cast<KyrType>(type);
  field.itsOffset = offset;
  return addSegyField(format, isBinary, field);
}

unsigned flagsOf(const SegyFormat& format, const SegyField* list, int dlgType = BOUNDS_ALL) {
  unsigned flags = 0;
  for (const SegyField* field = list; field != nullptr; field = field->nextField)
    boundsCheck(&format, list, field, &flags, dlgType);
  return flags;
}

// ---- bounds -----------------------------------------------------------------------------------------------------

TEST(SegyBounds, AFieldMayEndOneByteBehindItsHeader) {
  struct Case {
    int type, offset;
    unsigned outside;
  };
  const Case cases[] = {{4, 396, 0}, {4, 397, 0}, {4, 398, 1},     {6, 393, 0},    {6, 394, 1},
                        {2, 400, 0}, {2, 401, 1}, {3, 399, 0},     {9, 400, 0},    {9, 401, 1},
                        {4, 0, 0},   {4, -1, 1},  {6, INT_MAX, 1}, {6, INT_MIN, 1}};
  for (const Case& each : cases) {
    SCOPED_TRACE(std::to_string(each.type) + " at " + std::to_string(each.offset));
    SegyFormat format;
    format.itsBinaryBytes = 400;
    format.itsTraceBytes = 240;
    add(&format, "Dt", each.type, each.offset);
    EXPECT_EQ(flagsOf(format, format.itsBinaryFields), each.outside << 16);
    EXPECT_EQ(headerHolds(400, *format.itsBinaryFields),
              each.offset >= 0 && each.offset <= 400 - kyrTypeBytes(each.type));
  }
  SegyFormat format;
  format.itsBinaryBytes = 400;
  format.itsTraceBytes = 240;
  add(&format, "Dt", 4, 300, false);
  EXPECT_EQ(flagsOf(format, format.itsTraceFields), 0x10000U);  // the trace header's own length counts
}

TEST(SegyBounds, EachOverlappingPairCountsTwiceOverAList) {
  SegyFormat format;
  format.itsBinaryBytes = 400;
  add(&format, "A", 4, 0);
  SegyField* const b = add(&format, "B", 3, 4);
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields), 0U);
  b->itsOffset = 3;
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields), 2U);
  add(&format, "C", 6, 4);
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields), 4U);
  add(&format, "C", 6, 4);  // a field of the same name is no other field
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields), 6U);
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields, BOUNDS_INPUT), 0U);
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields, 2), 0U);
  b->inputKyrHeader = trFieldFile;
  EXPECT_EQ(flagsOf(format, format.itsBinaryFields, BOUNDS_INPUT), 3U);  // A and both C meet B; B meets nobody read
  EXPECT_EQ(overlapsIn(3), 1U);
}

TEST(SegyBounds, CountsStayInTheirHalves) {
  SegyFormat format;
  add(&format, "A", 2, -1);
  add(&format, "B", 2, -1);
  unsigned flags = 0xFFFFFFFFU;
  boundsCheck(&format, format.itsBinaryFields, format.itsBinaryFields, &flags, BOUNDS_ALL);
  EXPECT_EQ(flags, 0xFFFFFFFFU);
  flags = 0x0000FFFFU;
  boundsCheck(&format, format.itsBinaryFields, format.itsBinaryFields, &flags, BOUNDS_ALL);
  EXPECT_EQ(flags, 0x0001FFFFU);
}

// ---- dialogs ----------------------------------------------------------------------------------------------------

class SegyFieldsDialog : public testing::Test {
 protected:
  unsigned fill(int list) {
    const unsigned flags = doFieldList(&format, format.itsBinaryFields, dialog, list);
    rows = toolkit.rows(dialog, list);
    return flags;
  }
  int color(int list) {
    const XVT_COLOR shown = toolkit.color(dialog, list);
    return shown.red << 16 | shown.green << 8 | shown.blue;
  }

  TestToolkit toolkit;
  static constexpr DLG_ITEM items[] = {ui::list(3, "mapped", 40, 5), ui::list(4, "header", 40, 5),
                                       ui::list(5, "binary", 40, 5), ui::list(6, "trace", 40, 5)};
  static constexpr DLG_RES table = {900, "fields", "Fields", items, 4};
  WINDOW dialog = xvt_dlg_create_table(
      WD_MODELESS, &table, [](WINDOW, EVENT*) -> long { return 0; }, nullptr);
  SegyFormat format;
  Lines rows;
};

TEST_F(SegyFieldsDialog, ListsMarkProblemsAndRequiredFields) {
  format.itsBinaryBytes = 10;
  format.itHasBinaryHeader = 1;
  format.itsCurrentBField = 2;
  format.itsCurrentTField = 1;
  add(&format, "A", 4, 0)->itIsRequired = 1;
  add(&format, "B", 4, 3)->itIsMapped = 1;
  add(&format, "C", 4, 7);
  add(&format, "D", 2, 20)->itIsRequired = 1;
  EXPECT_EQ(fill(5), 0x10002U);
  EXPECT_EQ(rows, (Lines{"* the A (required)", "* the B", "the C", "* the D (required)"}));
  EXPECT_EQ(toolkit.selected(dialog, 5), Lines{"the C"});
  EXPECT_EQ(fill(kSegyMappingList), 0x10002U);
  EXPECT_EQ(rows, (Lines{"the A (required)", "the C", "the D (required)"}));
  format.itHasBinaryHeader = 0;
  fill(5);
  EXPECT_EQ(rows, (Lines{"the A (required)", "the B", "the C", "the D (required)"}));
  doFieldList(&format, format.itsTraceFields, dialog, 6);
  EXPECT_EQ(toolkit.rows(dialog, 6), Lines{});
  add(&format, "T", 4, 0, false);
  add(&format, "U", 4, 0, false);
  format.itsTraceBytes = 240;
  EXPECT_EQ(doFieldList(&format, format.itsTraceFields, dialog, 6), 2U);
  EXPECT_EQ(toolkit.rows(dialog, 6), (Lines{"* the T", "* the U"}));
  EXPECT_EQ(toolkit.selected(dialog, 6), Lines{"* the U"});
  format.itIsInputFmt = 1;
  EXPECT_EQ(doFieldList(&format, format.itsTraceFields, dialog, 6), 0U);
}

TEST_F(SegyFieldsDialog, MarksFieldsBeyondTheEndOfTheCounts) {
  format.itsBinaryBytes = 400;
  format.itHasBinaryHeader = 1;
  for (int i = 0; i < 300; ++i) add(&format, std::to_string(i).c_str(), 4, 0);
  EXPECT_EQ(fill(5), 0xFFFFU);
  EXPECT_EQ(std::ranges::count_if(rows, [](const std::string& row) { return row.starts_with("* "); }), 300);
}

TEST_F(SegyFieldsDialog, WarnsWhenTheListTurnsRed) {
  struct Case {
    unsigned flags;
    int list;
    const char* text;
  };
  const Case cases[] = {
      {2, 4, "1 byte position overlap exists between fields.\n|SEG Y Header List"},
      {3, 4, "1 byte position overlap exists between fields.\n|SEG Y Header List"},
      {4, 3, "2 byte position overlaps exist between fields.\n|Kyr Mapping List"},
      {0x10000, 4, "1 byte position exceeds specified header size.\n|SEG Y Header List"},
      {0x20006, 4,
       "3 byte position overlaps exist between fields.\n2 byte positions exceed specified header size.\n|SEG Y Header "
       "List"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.flags);
    toolkit.notes.clear();
    int background = kFieldsSoundColor;
    boundsError(dialog, each.list, 1, &background);  // half a pair is none
    EXPECT_EQ(color(each.list), 0xFFFFFF);
    EXPECT_EQ(toolkit.notes, Lines{});
    boundsError(dialog, each.list, each.flags, &background);
    EXPECT_EQ(color(each.list), 0xFFAAAA);
    EXPECT_EQ(background, 0xFFAAAA);
    boundsError(dialog, each.list, each.flags, &background);  // once
    const std::string text = each.text;
    const std::size_t bar = text.find('|');
    EXPECT_EQ(toolkit.notes, Lines{"WARNING:\n" + text.substr(0, bar) +
                                   "Problem field(s) will be marked ( * ) in the " + text.substr(bar + 1) + "."});
  }
}

// ---- text form --------------------------------------------------------------------------------------------------

Lines faultsOf(const std::string& text) {
  SegyFormat format;
  Lines lines;
  for (const SegyTextFault& fault : parseSegyFormat(text, &format))
    lines.push_back(std::to_string(fault.line) + ": " + fault.text);
  return lines;
}

TEST(SegyText, EverySettingSurvivesWritingAndReading) {
  SegyFormat format;
  copyText(format.itsName, "Line 7 = \"east\" # 2");
  for (short SegyFormat::*flag :
       {&SegyFormat::itIsReadOnly, &SegyFormat::itDoesStripAux, &SegyFormat::itDoesVibCorr, &SegyFormat::itDoesMinPhase,
        &SegyFormat::itsSweepTraceFixed, &SegyFormat::itHasReelHeader, &SegyFormat::itHasReelEBCDIC,
        &SegyFormat::itHasBinaryHeader, &SegyFormat::itHasTraceHeader, &SegyFormat::itOutputsDeadTraces})
    format.*flag = 1;
  format.itDoesSwapBytes = format.itUsesTextFile = format.itIsInputFmt = format.itIsBigEndian = 1;
  int number = 17;
  for (int SegyFormat::*value : {&SegyFormat::itsStartPad, &SegyFormat::itsEndPad, &SegyFormat::itsReelBytes,
                                 &SegyFormat::itsBinaryBytes, &SegyFormat::itsTraceRecord, &SegyFormat::itsTraceBytes})
    format.*value = number++;
  format.itsStartPad = INT_MIN;
  format.itsTraceTypes[1] = -5;
  copyText(format.itsTextFileSpec.dir.path, "/data/a b");
  copyText(format.itsTextFileSpec.name, "reel.txt");
  SegyField* const field = add(&format, "Mixed name", doubleFloatType, 12, false);
  field->itsScaleFactor = 0.1;
  field->itIsOverridden = field->itHasRange = field->itIsRequired = field->itIsEditedField = field->itIsMapped = 1;
  field->itsOverrideValue.doubleValue = 1.0 / 3;
  field->itsRangeMin.doubleValue = -1e300;
  field->itsRangeMax.doubleValue = 5e-324;
  field->inputKyrHeader = trFieldFile;
  field->kyrHeaderCount = kMaxOutputProperties;
  for (int i = 0; i < kMaxOutputProperties; ++i) field->outputKyrHeader[i] = static_cast<TraceProperty>(i);
  add(&format, "Mixed name", byteType, -1);
  EXPECT_TRUE(printSegyFormat(format).starts_with(firstLine));
  SegyField* const wide = add(&format, "Wide", unsigned64Type, 20, false);
  wide->itIsOverridden = 1;
  wide->itsOverrideValue = valueOf(std::uint64_t{0xFFFFFFFFFFFFFFFF});
  copyText(wide->itsScaleField, "Its scalar");
  copyText(wide->itsReplaced, "Mixed name");
  add(&format, "Second", singleFloatType, 399)->itIsOverridden = 1;
  getField(format.itsBinaryFields, "Second")->itsOverrideValue.floatValue = 0.1F;

  SegyFormat again;
  const std::string text = printSegyFormat(format);
  ASSERT_TRUE(parseSegyFormat(text, &again).empty());
  EXPECT_EQ(printSegyFormat(again), text);
  EXPECT_EQ(again.itsVersion, 2);
  EXPECT_EQ(valueIn<std::uint64_t>(getField(again.itsTraceFields, "Wide")->itsOverrideValue), 0xFFFFFFFFFFFFFFFF);
  EXPECT_STREQ(getField(again.itsTraceFields, "Wide")->itsScaleField, "Its scalar");
  EXPECT_STREQ(getField(again.itsTraceFields, "Wide")->itsReplaced, "Mixed name");
  EXPECT_EQ(std::ranges::count(checkSegyFormat(again),
                               "field \"Wide\" names \"Its scalar\", which the trace header does not have"),
            1);
  EXPECT_EQ(again.itsStartPad, INT_MIN);
  EXPECT_EQ(again.itsTraceBytes, format.itsTraceBytes);
  EXPECT_EQ(again.itDoesMinPhase + again.itUsesTextFile + again.itsSweepTraceFixed, 3);
  EXPECT_STREQ(again.itsName, format.itsName);
  EXPECT_STREQ(again.itsTextFileSpec.dir.path, "/data/a b");
  EXPECT_STREQ(again.itsTextFileSpec.name, "reel.txt");
  EXPECT_EQ(again.itsBinaryCount * 10 + again.itsTraceCount, 22);
  const SegyField* const back = again.itsTraceFields;
  EXPECT_EQ(
      std::tuple(back->itsType, back->itsScaleFactor, back->itsOverrideValue.doubleValue, back->itsRangeMin.doubleValue,
                 back->itsRangeMax.doubleValue, back->itIsBinaryField, back->outputKyrHeader[kMaxOutputProperties - 1]),
      std::tuple(doubleFloatType, 0.1, 1.0 / 3, -1e300, 5e-324, 0, kMaxOutputProperties - 1));
  EXPECT_EQ(again.itsBinaryFields->itsOffset, -1);
  EXPECT_EQ(again.itsBinaryFields->nextField->itsOverrideValue.floatValue, 0.1F);
}

TEST(SegyText, EveryFaultIsToldWithItsLine) {
  const std::string field = "[trace Nt]\ntype = int16\nbyte = 115\n";
  const std::string noDescription =
      "1: no SEG Y format description: the first line must read \"Quarlo SEG Y format, version 2, readable from 1\"";
  struct Case {
    std::string text;
    Lines faults;
  };
  const Case cases[] = {
      {"", {"0: " + noDescription.substr(3)}},
      {"name = x\n", {noDescription}},
      {"Quarlo SEG Y format, version one, readable from 1\n", {noDescription}},
      {"Quarlo SEG Y format, version 1, readable from 2\n", {noDescription}},
      {"Quarlo SEG Y format, version 3, readable from 1\r\n\r\nname = later\r\n", {}},
      {"Quarlo SEG Y format, version 4, readable from 3\n",
       {"1: written in version 4, which this program cannot read"}},
      {firstLine + std::string("nam = x\nname\ninput = maybe\nname = x\nname = y\n"),
       {"2: unknown key \"nam\"", "3: neither KEY = VALUE nor a section", "4: \"input\" must be yes or no",
        "6: \"name\" is given twice"}},
      {firstLine + std::string("reel-header-bytes = -1\nbinary-header-bytes = 1048577\ntrace-header-bytes = 1e2\n"),
       {"2: \"reel-header-bytes\" must be a whole number from 0 to 1048576",
        "3: \"binary-header-bytes\" must be a whole number from 0 to 1048576",
        "4: \"trace-header-bytes\" must be a whole number from 0 to 1048576"}},
      {firstLine + std::string("trace-header = yes\nreel-header-from-file = yes\ntrace-types = 1 2\nreel-header-file = "
                               "x/\nname = a\001b\n"),
       {"2: \"trace-header\" needs \"trace-header-bytes\" of 1 or more",
        "3: \"reel-header-from-file\" needs \"reel-header-file\"", "4: \"trace-types\" must be three whole numbers",
        "5: \"reel-header-file\" must be the path of a file", "6: a character that is no text"}},
      {firstLine + field + field + "[binary Nt]\ntype = int17\nbyte = 0x\n[reel Nt]\n[binary ]\nname = x\n",
       {"5: a second field \"Nt\" of the trace header",
        "9: \"type\" must be int8 to int64, uint8 to uint64, float32 or float64",
        "10: \"byte\" must be a place in the header, the first byte being 1",
        "11: a section is [binary NAME] or [trace NAME]", "12: \"\" is no name of 1 to 63 characters",
        "13: unknown key \"name\""}},
      {firstLine +
           std::string("[trace A]\noverride = 5\n[trace B]\noverride = 70000\ntype = int16\nbyte = 1\nrange = 1\n"
                       "scale = nan\noutput-properties = 1 -2\ninput-property = 1 2\n"),
       {"2: field \"A\" has no \"type\"", "2: field \"A\" has no \"byte\"",
        "5: \"override\" must be 1 number of the field's type", "8: \"range\" must be 2 numbers of the field's type",
        "9: \"scale\" must be a number", "10: \"output-properties\" must be at most 42 numbers of trace properties",
        "11: \"input-property\" must be the number of a trace property"}},
      {firstLine + std::string("[trace A]\nrange = 5 1\ntype = int8\nbyte = 1\n[trace B]\ntype = float32\nbyte = 1\n"
                               "range = -2.5 -2.5\n[trace C]\ntype = float64\nbyte = 1\nrange = 1 -1e300\n"),
       {"3: \"range\" has its minimum above its maximum", "13: \"range\" has its minimum above its maximum"}},
      {firstLine + ("[trace " + std::string(64, 'x') + "]\n"),
       {"2: \"" + std::string(64, 'x') + "\" is no name of 1 to 63 characters"}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.text);
    EXPECT_EQ(faultsOf(each.text), each.faults);
  }
  EXPECT_EQ(faultsOf(std::string(kMaxSegyTextBytes + 1, '#')), Lines{"0: the text is longer than 1048576 bytes"});
  std::string many = firstLine;
  for (int i = 0; i <= kMaxSegyFields; ++i) many += "[trace " + std::to_string(i) + "]\ntype = int8\nbyte = 1\n";
  EXPECT_EQ(faultsOf(many), Lines{"3002: more than 1000 fields"});
}

class SegyFormatFile : public testing::Test {
 protected:
  FILE_SPEC specOf(const std::string& name) {
    FILE_SPEC file{};
    copyText(file.dir.path, folder.path(""));
    copyText(file.name, name);
    return file;
  }
  static Lines namesHere() {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator(".")) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }
  TestFolder folder;
  SegyFormat format;
  Lines messages;
};

TEST_F(SegyFormatFile, FaultsAndWarningsNameTheFile) {
  EXPECT_FALSE(loadSegyFormat(specOf("none.txt"), &format, &messages));
  writeFile("bad.txt", firstLine + std::string("\nsize = 3\n"));
  EXPECT_FALSE(loadSegyFormat(specOf("bad.txt"), &format, &messages));
  writeFile("odd.txt",
            firstLine + std::string("trace-header = yes\ntrace-header-bytes = 240\nreel-header-from-file = yes\n"
                                    "reel-header-file = notes/reel.txt\n"
                                    "[trace A]\ntype = int32\nbyte = 238\n[trace B]\ntype = int16\nbyte = 239\n"));
  EXPECT_TRUE(loadSegyFormat(specOf("odd.txt"), &format, &messages));
  EXPECT_EQ(messages, (Lines{"none.txt: No such file or directory", "bad.txt, line 3: unknown key \"size\"",
                             "odd.txt: field \"A\" does not fit the 240 bytes of the trace header and will be left out",
                             "odd.txt: fields \"A\" and \"B\" of the trace header overlap"}));
  EXPECT_EQ(format.itsTextFileSpec.dir.path, folder.path("notes"));
  // The example of the page, and what the page says of a fault.
  const std::string page = QUARLO_FORMATS "/../../docs/format-segy-description.md";
  messages.clear();
  writeFile("mine.txt", documentExample(page, "Quarlo SEG Y format"));
  EXPECT_TRUE(loadSegyFormat(specOf("mine.txt"), &format, &messages));
  EXPECT_EQ(format.itsBinaryCount * 10 + format.itsTraceCount, 34);
  writeFile("mine.txt", firstLine + std::string(8, '\n') + "[trace A]\ntype = int8\nbyte = first\n");
  EXPECT_FALSE(loadSegyFormat(specOf("mine.txt"), &format, &messages));
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[0] + "\n\n", documentExample(page, "mine.txt"));
}

TEST_F(SegyFormatFile, SavesWholeOrNotAtAll) {
  copyText(format.itsName, "first");
  EXPECT_TRUE(saveSegyFormat(&format, specOf("f.txt"), &messages));
  const std::string before = readFile("f.txt");
  SegyField* const field = add(&format, "A", singleFloatType, 0);
  field->itIsOverridden = 1;
  field->itsOverrideValue.floatValue = std::nanf("");
  EXPECT_FALSE(saveSegyFormat(&format, specOf("f.txt"), &messages));
  field->itIsOverridden = 0;
  std::filesystem::create_directory("d.txt");
  EXPECT_FALSE(saveSegyFormat(&format, specOf("d.txt"), &messages));
  EXPECT_FALSE(saveSegyFormat(&format, specOf("none/f.txt"), &messages));
  EXPECT_EQ(readFile("f.txt"), before);
  EXPECT_EQ(namesHere(), (Lines{"d.txt", "f.txt"})) << "something unfinished is left";
  format.itIsReadOnly = 1;
  EXPECT_FALSE(saveSegyFormat(&format, specOf("f.txt"), &messages));
  EXPECT_TRUE(saveSegyFormat(&format, specOf("copy.txt"), &messages));
  EXPECT_EQ(messages,
            (Lines{"f.txt, line 9: \"override\" must be 1 number of the field's type", "d.txt: Is a directory",
                   "none/f.txt: No such file or directory", "f.txt: the description is read-only"}));
  SegyFormat copy;
  EXPECT_TRUE(loadSegyFormat(specOf("copy.txt"), &copy, &messages));
  EXPECT_EQ(printSegyFormat(copy), printSegyFormat(format));
}

TEST_F(SegyFormatFile, SavingTouchesNoOtherFile) {
  for (const char* suffix : {".new", ".new1", ".new2"}) writeFile(std::string("f.txt") + suffix, "mine");
  EXPECT_TRUE(saveSegyFormat(&format, specOf("f.txt"), &messages));
  EXPECT_EQ(namesHere(), (Lines{"f.txt", "f.txt.new", "f.txt.new1", "f.txt.new2"}));
  EXPECT_EQ(readFile("f.txt.new") + readFile("f.txt.new1") + readFile("f.txt.new2"), "mineminemine");
  EXPECT_EQ(std::filesystem::status("f.txt").permissions(), std::filesystem::status("f.txt.new").permissions());
}

// Descriptions in a directory that is itself named by a relative path.
TEST_F(SegyFormatFile, TheTextFileIsFoundAgainWhereverTheDescriptionIsSaved) {
  const auto spec = [](const char* directory, const char* name) {
    FILE_SPEC file{};
    copyText(file.dir.path, directory);
    copyText(file.name, name);
    return file;
  };
  const auto textFileOf = [&](const FILE_SPEC& file) {
    SegyFormat loaded;
    EXPECT_TRUE(loadSegyFormat(file, &loaded, &messages));
    return std::string(loaded.itsTextFileSpec.dir.path) + '/' + loaded.itsTextFileSpec.name;
  };
  for (const char* directory : {"fmts", "other"}) std::filesystem::create_directory(directory);
  writeFile("fmts/a.txt",
            firstLine + std::string("reel-header = yes\nreel-header-bytes = 20\nreel-header-from-file = yes\n"
                                    "reel-header-file = sub/reel.txt\n"));
  const std::string reel = folder.path("fmts/sub/reel.txt");
  ASSERT_TRUE(loadSegyFormat(spec("fmts", "a.txt"), &format, &messages));
  for (const FILE_SPEC& file : {spec("fmts", "b.txt"), spec("other", "c.txt"), spec("", "d.txt"), specOf("e.txt")}) {
    ASSERT_TRUE(saveSegyFormat(&format, file, &messages));
    EXPECT_EQ(textFileOf(file), reel) << file.dir.path << '/' << file.name;
  }
  EXPECT_NE(readFile("fmts/b.txt").find("reel-header-file = sub/reel.txt\n"), std::string::npos);
  std::filesystem::rename("fmts", "moved");
  EXPECT_EQ(textFileOf(spec("moved", "b.txt")), folder.path("moved/sub/reel.txt"));
  // A path of the user's own is one from the working directory.
  format.itsTextFileSpec = spec("x", "own.txt");
  ASSERT_TRUE(saveSegyFormat(&format, spec("other", "c.txt"), &messages));
  EXPECT_EQ(textFileOf(spec("other", "c.txt")), folder.path("x/own.txt"));
  format.itsTextFileSpec = spec("x", "own.txt ");
  EXPECT_FALSE(saveSegyFormat(&format, spec("other", "c.txt"), &messages));
  EXPECT_EQ(messages, Lines{"c.txt: the path of the reel header's text file cannot stand in a line"});
}

TEST(SegyText, TheShippedDescriptionsAreSoundAndHoldTheStandardPlaces) {
  for (const int revision : {0, 1, 2}) {
    FILE_SPEC file{};
    copyText(file.dir.path, QUARLO_FORMATS);
    copyText(file.name, "segy-rev" + std::to_string(revision) + ".txt");
    SegyFormat format;
    Lines messages;
    ASSERT_TRUE(loadSegyFormat(file, &format, &messages));
    EXPECT_EQ(messages, Lines{});
    EXPECT_EQ(format.itsReelBytes + format.itsBinaryBytes + format.itsTraceBytes, revision == 2 ? 4080 : 3840);
    const auto placeOf = [](const SegyField& field) {
      return formatText("%s %d+%d ", field.itsName, field.itsOffset + 1, kyrTypeBytes(field.itsType));
    };
    std::string places;
    std::string properties;
    for (const SegyField* field = format.itsBinaryFields; field != nullptr; field = field->nextField)
      if (field->itsReplaced[0] == '\0') places += placeOf(*field);
    for (const SegyField* field = format.itsTraceFields; field != nullptr; field = field->nextField)
      if (field->inputKyrHeader != trNone)
        properties += formatText("%d:%d ", int{field->inputKyrHeader}, field->itsOffset + 1);
      else if (field->itIsRequired != 0)
        places += placeOf(*field);
    EXPECT_EQ(places, std::string("TracesPerRec 13+2 AuxPerRec 15+2 Dt 17+2 Nt 21+2 SampFormat 25+2 SweepLength 37+2 "
                                  "SweepTrace 41+2 CorrCode 49+2 ") +
                          (revision == 2 ? "ByteOrder 97+4 " : "") +
                          (revision >= 1 ? "Revision 301+1 MinorRevision 302+1 " : "") +
                          (revision == 2 ? "AdditionalHeaders 307+4 " : "") + "Nt 115+2 Dt 117+2 ");
    EXPECT_EQ(properties, "9:1 8:9 10:13 5:17 3:21 12:29 16:37 22:41 19:45 17:73 18:77 20:81 21:85 150:109 ");
  }
}

}  // namespace
