// The file scan in its dialog: index file, trace table and summary of datasets, what is refused, every end of a run.
// Indexes of SEG Y are read by tests/scripts/jobs_datasets.sh.
#include "quarlo/index/indx_dlg.h"

#include "libkyr/nullvalue.h"
#include "quarlo/index/indexfile.h"
#include "tests/support/dataset_maker.h"
#include "tests/support/job_fixture.h"

namespace {

class IndexTest : public JobTest {
 protected:
  IndexTest() {
    setenv("KYRHOME", std::filesystem::current_path().c_str(), 1);
    for (const char* name : {"lib", "in"}) std::filesystem::create_directory(name);
    for (const std::string name : {"iokyr.so", "iosegd.so"})
      std::filesystem::copy(QUARLO_BUILT_MODULES + name, "lib/" + name);
    JobTest::open(DLG_FILE_SCAN, FileIndexDialog_eh);
    // Two records of three traces: a dead one, one that nobody wrote, values that are null.
    makeDataset(folder.path("in/a.kyr"), 2, 3, {}, [](int record, int trace, TraceInfo* header, float*) {
      const int number = 10 * record + trace;
      const auto set = [header](int property, float value) {
        SetTraceProperty(property, singleFloatType, gUnknownUnits, &value, header);
      };
      set(trFieldFile, static_cast<float>(100 + number / (trace == 3 ? 1 : 10)));
      set(trCmpLine, trace == 3 ? kNullFloat : 7.0F);
      set(trCmpLocation, static_cast<float>(number) + 0.25F);
      set(trSourceLine, kNullFloat);
      set(trSourceLocation, 100000.0F);
      set(trOffset, -12.5F * static_cast<float>(trace));
      if (number == 12) header->words[trKillFlag] = killProcessing;
      return number != 22;
    });
  }
  ~IndexTest() override {
    toolkit.close(dialog);
    unsetenv("KYRHOME");
  }
  std::string run(const std::string& input, const std::string& table = "") {
    chooseFile(FS_INPUT, folder.path(input));
    if (toolkit.checked(dialog, FS_TABLE) == table.empty()) toolkit.press(dialog, FS_TABLE);
    if (!table.empty()) chooseFile(FS_TABLE_FILE, folder.path(table));
    return again();
  }
  std::string again() {
    forgetConsole();
    toolkit.press(dialog, FS_RUN);
    return toolkit.text(dialog, FS_STATUS);
  }
  std::unique_ptr<IndexFile> header(const std::string& name = "in\\a.kyr.idx") {
    auto read = std::make_unique<IndexFile>();
    std::ifstream(name, std::ios::binary).read(reinterpret_cast<char*>(read.get()), sizeof(IndexFile));
    return read;
  }
  int stored(const IndexFile& file, int property) {
    int value = -1;
    GetDSProperty(property, longIntType, gUnknownUnits, &value, &file.gSeisOrg);
    return value;
  }
};

TEST_F(IndexTest, OnePassWritesIndexTableAndSummary) {
  EXPECT_EQ(toolkit.text(dialog, FS_STATUS), "Idle");
  toolkit.select(dialog, FS_FORMAT, 1);
  EXPECT_EQ(toolkit.notes, Lines{"SEG D files cannot be indexed: SEG Y files and datasets can."});
  EXPECT_EQ(toolkit.selected(dialog, FS_FORMAT), Lines{"Kyr"});
  EXPECT_EQ(run("in/a.kyr", "table.csv"), "Complete");
  EXPECT_EQ(readFile("table.csv"),
            "record,trace,state,field_file,channel,source_line,source_location,receiver_line,receiver_location,"
            "cmp_line,cmp_location,offset,byte\r\n"
            "1,1,live,101,0,,100000,0,0,7,11.25,-12.5,\r\n1,2,32,101,0,,100000,0,0,7,12.25,-25,\r\n"
            "1,3,live,113,0,,100000,0,0,,13.25,-37.5,\r\n2,1,live,102,0,,100000,0,0,7,21.25,-12.5,\r\n"
            "2,2,1,,,,,,,,,,\r\n2,3,live,123,0,,100000,0,0,,23.25,-37.5,\r\n");
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{" ", "File scan of " + folder.path("in/a.kyr") + ":", "2 records, 5 traces: 4 live, 1 dead.",
                   "1 place without a trace.", "Field files from 101 to 123.",
                   "  ** 19 field file numbers between them are missing: 103 to 112, 114 to 122.",
                   "Source locations from 100000 to 100000.", "Receiver lines from 0 to 0.",
                   "Receiver locations from 0 to 0.", "CMP lines from 7 to 7.", "CMP locations from 11 to 23.",
                   "Offsets from -37.5 to -12.5.", "The index file " + folder.path("in\\a.kyr.idx") + " has 4 entries.",
                   " "}));

  const auto file = header();
  EXPECT_EQ((std::array<int, 8>{file->fileTypeNumber, file->indexFileVersionNumber, file->numberOfInputFiles,
                                file->numberOfIndexFiles, file->numberOfKeys, file->keyEntries, file->sampleFormat,
                                file->bytesPerSample}),
            (std::array<int, 8>{UT_DISK, 1, 1, 1, 7, 4, 5, 4}));
  EXPECT_EQ(file->byteOffsetToIndexArrays, 528132);
  EXPECT_STREQ(file->files[0].fileName, "a.kyr");
  EXPECT_STREQ(file->keys[5].keyDescription, "CMP Location");
  EXPECT_EQ(file->keys[5].trPropertyType * 10 + file->keys[5].typeOfKey, 34);
  EXPECT_EQ(stored(*file, dsMaxCmpLocation) - stored(*file, dsMinCmpLocation), 12);
  EXPECT_EQ(stored(*file, dsMinSourceLine), 0) << "all of them null";
  EXPECT_EQ(stored(*file, dsMinFieldFile) * 1000 + stored(*file, dsMaxFieldFile), 11123)
      << "of the CMP locations, and of the last trace";
  // All entries went through one slot: the last live trace, then zeros.
  indexarray last{};
  last.fileIndex = 1;
  last.recordNumber = 2;
  last.traceNumber = 3;
  last.cmpLoc = 23;
  last.offset = -37.5F;
  std::string entries(4 * sizeof last, '\0');
  std::memcpy(entries.data(), &last, sizeof last);
  EXPECT_EQ(readFile("in\\a.kyr.idx").substr(kIndexHeaderSize), entries);

  // Without a live trace there are no entries, and the ranges stay those of before.
  makeDataset(folder.path("in/dead.kyr"), 1, 2, {}, [](int, int, TraceInfo*, float*) { return false; });
  EXPECT_EQ(run("in/dead.kyr"), "Complete");
  EXPECT_EQ(std::filesystem::file_size("in\\dead.kyr.idx"), 528132U);
  EXPECT_EQ(stored(*header("in\\dead.kyr.idx"), dsMaxCmpLocation), 23);
}

TEST_F(IndexTest, WhateverEndsAScanIsTold) {
  EXPECT_EQ(run("in/a.kyr"), "Complete");
  EXPECT_EQ(again(), "Complete") << "the file stays chosen";
  for (long at = 1; at <= 12; ++at) {
    const bool wants = at > 6;  // memory
    toolkit.pumps = 0;
    toolkit.onPump = [&](long pumps) {
      if (pumps != (at - 1) % 6 + 1) return;
      if (wants) throw std::bad_alloc();
      toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
    };
    EXPECT_EQ(again(), "Failed") << at;
    EXPECT_EQ(consoleWithoutDates(), Lines{wants ? "  *** There is not enough memory for this job."
                                                 : "  *** Reformat aborted by user at DATE."});
    EXPECT_EQ(header()->keyEntries, 0);
  }
  toolkit.onPump = nullptr;
  for (const rlim_t room : {0, 1000, 528132, 528199, 528403}) {
    const FileLimit limit(room);
    EXPECT_EQ(run("in/a.kyr", "table.csv"), "Failed") << room;
    EXPECT_EQ(std::ranges::count_if(consoleWithoutDates(),
                                    [](auto& line) { return line.starts_with("  *** Error writing to disk file"); }),
              1);
  }
  EXPECT_EQ(run("in/a.kyr", "in\\a.kyr.idx"), "Failed");
  expectSaid("  *** Error: the trace table " + folder.path("in\\a.kyr.idx") + " is the input or the index file.");
  std::filesystem::remove("in\\a.kyr.idx");
  std::string bytes = readFile("in/a.kyr");
  std::filesystem::create_hard_link("in/a.kyr", "in\\a.kyr.idx");
  EXPECT_EQ(run("in/a.kyr"), "Failed");
  EXPECT_TRUE(readFile("in/a.kyr") == bytes);
  std::filesystem::remove("in\\a.kyr.idx");
  std::filesystem::create_directory("in\\a.kyr.idx");
  EXPECT_EQ(run("in/a.kyr"), "Failed");
  EXPECT_TRUE(consoleHas("  *** Error writing to disk file \"" + folder.path("in\\a.kyr.idx") + "\": Is a directory."));
  writeFile("in/text.kyr", "text");
  EXPECT_EQ(run("in/text.kyr"), "Failed");
  bytes[4096 + 832 + 40] ^= 1;
  writeFile("in/b.kyr", bytes);
  EXPECT_EQ(run("in/b.kyr"), "Failed");
  EXPECT_TRUE(consoleHas("  *** 1 trace could not be read."));
  EXPECT_EQ(header("in\\b.kyr.idx")->keyEntries, 4) << "all others are in the index";
}

}  // namespace
