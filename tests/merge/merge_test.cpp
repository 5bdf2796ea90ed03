// The merge in its dialog: what comes out of which inputs, what is left out and why, and the output at every end that a
// run can have.
#include "quarlo/merge/mergedlg.h"

#include <array>
#include <sstream>

#include "libkyr/text.h"
#include "quarlo/merge/mergelist.h"
#include "quarlo/merge/mergeplan.h"
#include "tests/support/dataset_maker.h"
#include "tests/support/job_fixture.h"
#include "xvt/desk/dialog.h"

namespace {

class MergeTest : public JobTest {
 protected:
  MergeTest() {
    outFile = {};
    overrideOutputType = false;
    typeIndex = 0;
    std::filesystem::create_directory("in");
    JobTest::open(DLG_MERGE, FileMergeDlg_eh);
  }
  ~MergeTest() override { InputList.clear(); }

  /// A dataset from a text, "LK,.L" for records of live, killed and never written traces.
  void make(const std::string& name, const std::string& text, const DatasetFacts& facts = {}) {
    const int traces = static_cast<int>(text.find(',') == text.npos ? text.size() : text.find(','));
    const int records = traces > 0 ? static_cast<int>(text.size() + 1) / (traces + 1) : 0;
    makeDataset(folder.path(name), records, traces, facts,
                [&](int record, int trace, TraceInfo* header, float* samples) {
                  const char kind = text[static_cast<std::size_t>((record - 1) * (traces + 1) + trace - 1)];
                  if (kind == 'K') header->words[trKillFlag] = killProcessing;
                  std::fill_n(samples, facts.samples, static_cast<float>(++made_));
                  return kind != '.';
                });
  }
  /// Type, counts, interval in ms, and of every trace its samples' number (dead ones their flag behind it) and its own.
  std::string told(const std::string& name) {
    const Lines before = consoleWithoutDates();
    const ProcessRecordPtr reader(NewProcessRecord());  // a record warns of a dataset once
    SetNumberOfInputs(reader.get(), 1);
    Link link;
    if (NewInputFile(&link, reader.get(), folder.path(name).c_str(), 0, kAnySeismicType) != kyrOk) return "none";
    KyrFile facts;
    readFacts(reader.get(), link, &facts);
    std::string text = consoleWithoutDates() == before ? "" : "cut ";
    text += formatText("%d: %dx%d %g", facts.seismicFileType, facts.numberOfRecords, facts.tracesPerRecord,
                       static_cast<double>(facts.sampleInterval) * 1e3);
    std::vector<float> samples(static_cast<std::size_t>(facts.numberOfSamples));
    for (int r = 1; r <= facts.numberOfRecords; ++r)
      for (int t = 1; t <= facts.tracesPerRecord; ++t) {
        TraceInfo header;
        TraceGet(reader.get(), link, r, t, samples.data(), &header);
        const std::string flag = IsDead(header) ? formatText("K%u", header.words[trKillFlag]) : "";
        text += formatText(" %g%s:%u", static_cast<double>(samples[0]), flag.c_str(), header.words[trTraceNumber]);
      }
    CloseFile(reader.get(), link);
    return text;
  }
  void choose(int control, const std::string& path) { chooseFile(control, folder.path(path)); }
  void addFolder() { choose(MG_ADD_FOLDER, "in"); }
  std::string run() {
    forgetConsole();
    toolkit.press(dialog, MG_MERGE);
    return toolkit.text(dialog, MG_STATUS);
  }
  Lines framed(Lines lines, int files) {
    lines.insert(lines.begin(), {" ", "Merge started at DATE.", " "});
    for (const std::string& line : {std::string(" "), std::to_string(files) + " files merged.", std::string(" "),
                                    std::string("Merge ended at DATE."), std::string(" ")})
      lines.push_back(line);
    return lines;
  }
  std::string in(const std::string& name) { return folder.path("in/" + name); }

  int made_ = 0;  // traces so far: the value of the samples of the last
};

TEST_F(MergeTest, RecordsOneBehindTheOther) {
  make("in/a.kyr", "LL,KK,KL");
  make("in/b.kyr", "L.L", {.type = brickedTimeStack, .interval = 0.004F});
  make("in/c.kyr", "L", {.type = kStackedData, .samples = 3});
  std::filesystem::create_symlink("b.kyr", "in/link.kyr");
  EXPECT_EQ(toolkit.text(dialog, MG_STATUS), "Idle");
  xvt::Registry::instance().find<xvt::BaseDialog>(dialog)->takeFiles({in("link.kyr")}, {});
  addFolder();
  choose(MG_ADD_FILE, "in/b.kyr");
  ASSERT_EQ(InputList.size(), 3U) << "b.kyr is there as link.kyr";
  EXPECT_EQ(toolkit.rows(dialog, MG_INPUTS)[0],
            "link.kyr                       3D Stack             1 x 3 x 2       4 ms");
  EXPECT_FALSE(toolkit.enabled(dialog, MG_MERGE));
  std::filesystem::create_hard_link("in/a.kyr", "same.kyr");
  choose(MG_OUTPUT, "same.kyr");
  choose(MG_OUTPUT, "out.kyr");
  std::filesystem::copy_file("in/c.kyr", "out.kyr");
  choose(MG_ADD_FILE, "out.kyr");
  EXPECT_EQ(toolkit.errors, (Lines{"This file is already being used for input. Choose another file name.",
                                   "This file is already being used for output."}));
  toolkit.selectAlso(dialog, MG_INPUTS, 0);
  EXPECT_EQ(toolkit.text(dialog, MG_PATH), in("link.kyr"));
  toolkit.press(dialog, MG_REMOVE);
  choose(MG_ADD_FILE, "in/b.kyr");
  EXPECT_EQ(run(), "Complete");
  EXPECT_EQ(
      consoleWithoutDates(),
      framed({"  ** Warning: number of samples in file " + in("c.kyr"), "              doesn't match first input file.",
              "              This file will be omitted from merge.", " ", "Finished input of " + in("a.kyr") + ".",
              "Finished input of " + in("b.kyr") + "."},
             2));
  // Record 2 holds dead traces alone, so record 3 is lost. The gap of b.kyr stays one.
  EXPECT_EQ(told("out.kyr"), "10: 3x3 2 1:1 2:2 0K1:0 3K32:3 4K32:4 0K1:0 7:5 0K1:0 9:7");
  EXPECT_EQ(toolkit.rows(dialog, MG_INPUTS).size(), 2U);

  // A stack is one record: dead traces are left out, their numbers stay free.
  toolkit.press(dialog, MG_FORCE_TYPE);
  toolkit.select(dialog, MG_TYPE, "2D Stack");
  toolkit.answerAsk(RESP_DEFAULT);
  EXPECT_EQ(run(), "Complete");
  EXPECT_EQ(toolkit.asks.back(), "This file is there already. Overwrite it?\n" + folder.path("out.kyr"));
  EXPECT_EQ(told("out.kyr"), "7: 1x7 2 1:1 2:2 0K1:0 0K1:0 7:5 0K1:0 9:7");
  toolkit.close(dialog);
  JobTest::open(DLG_MERGE, FileMergeDlg_eh);
  EXPECT_TRUE(InputList.empty() && toolkit.checked(dialog, MG_FORCE_TYPE));
  EXPECT_EQ(toolkit.text(dialog, MG_OUTPUT_NAME), folder.path("out.kyr"));
}

TEST_F(MergeTest, WhatCannotBeJoinedIsLeftOut) {
  for (const auto& [code, words] :
       {std::pair(-12, "  ** Warning: X is a file version that is not supported by this release."),
        {-9, "  ** Warning: X is not a GPR dataset."},
        {-8, "  ** Warning: X is not a 2-D dataset."},
        {-3, "  ** Warning: X is not a seismic dataset."},
        {-2, "  ** Warning: disk file error occurred opening X."},
        {-6, "Error opening file X."}})
    EXPECT_EQ(openingText(code, "X"), words);
  choose(MG_OUTPUT, "out.kyr");
  addFolder();
  EXPECT_EQ(toolkit.errors, Lines{"No Kyr files found in the folder."});
  writeFile("in/text.kyr", std::string(5000, 't'));
  make("in/gone.kyr", "L");
  addFolder();
  EXPECT_EQ(toolkit.rows(dialog, MG_INPUTS)[1], "text.kyr                       cannot be opened as a dataset");
  std::filesystem::remove("in/gone.kyr");
  EXPECT_EQ(run(), "Complete");
  const std::string omitted = "              This file will be omitted from merge.";
  EXPECT_EQ(consoleWithoutDates(),
            framed({"  ** Warning: disk file error occurred opening " + in("gone.kyr") + ".", omitted, " ",
                    "  ** Warning: " + in("text.kyr") + " is not a seismic dataset.", omitted, " "},
                   0));
  EXPECT_FALSE(std::filesystem::exists("out.kyr") || toolkit.enabled(dialog, MG_MERGE));

  // An output that became an input, or part of one, and counts that pass those of a trace's number: nothing is begun.
  make("in/a.kyr", "L,L");
  addFolder();
  InputList.erase(InputList.begin() + 1);
  std::filesystem::create_symlink("in/a.kyr", "out.kyr");
  toolkit.answerAsk(RESP_DEFAULT);
  EXPECT_EQ(run(), "Failed");
  EXPECT_TRUE(consoleHas("  *** Error: the output " + folder.path("out.kyr") + " is one of the inputs."));
  EXPECT_EQ(consoleWithoutDates().back() + told("in/a.kyr"), " 11: 2x1 2 2:0 3:0");
  std::filesystem::remove("out.kyr");
  make("in/wide.kyr", "L", {.places = 1 << 30});
  choose(MG_ADD_FILE, "in/wide.kyr");
  EXPECT_EQ(run(), "Failed");
  EXPECT_TRUE(consoleHas("  *** Error: no dataset can hold 3 records of 1073741824 traces."));
  EXPECT_FALSE(std::filesystem::exists("out.kyr"));
}

TEST_F(MergeTest, WhatCannotBeReadGoesOutDead) {
  make("in/a.kyr", "LLLLLLLLLLLLLL");
  make("in/b.kyr", "L,L");
  std::string bytes = readFile("in/a.kyr");
  for (int slot = 1; slot < 13; ++slot) bytes[4096 + 832U * static_cast<unsigned>(slot) + 830] ^= 1;
  writeFile("in/a.kyr", bytes);
  addFolder();
  choose(MG_OUTPUT, "out.kyr");
  EXPECT_EQ(run(), "Failed");
  const Lines said = consoleWithoutDates();
  EXPECT_EQ(std::ranges::count_if(said, [](auto& line) { return line.find(" cannot be read: ") != line.npos; }), 10);
  for (const char* line : {"  *** 12 traces could not be read.", "  *** Job Failed.", "2 files merged."})
    EXPECT_EQ(count(line), 1) << line;
  EXPECT_TRUE(consoleHas("  ** " + folder.path("out.kyr") + " is not complete: 3 records."));
  EXPECT_TRUE(told("out.kyr").starts_with("cut 11: 3x14 2 1:1 0K2:2 0K2:3"));
  // One that has become another since it was looked at is not read at all.
  addFolder();
  toolkit.onPump = [this](long) { make("in/b.kyr", "L", {.samples = 50}); };
  toolkit.answerAsk(RESP_DEFAULT);
  EXPECT_EQ(run(), "Failed");
  EXPECT_TRUE(consoleHas("  *** Error: " + in("b.kyr") + " has changed since the merge began."));
}

TEST_F(MergeTest, WhereverItEndsTheOutputIsTrue) {
  make("in/a.kyr", "LL,LL");
  make("in/b.kyr", "LL", {.type = kStackedData});
  const std::string whole = "10: 3x2 2 1:1 2:2 3:3 4:4 5:5 6:6";
  for (const std::string event : {"stop", "close", "no memory"})
    for (long at = 1; at <= 6; ++at) {
      if (!xvt_vobj_is_valid(dialog)) JobTest::open(DLG_MERGE, FileMergeDlg_eh);
      std::filesystem::remove("out.kyr");
      addFolder();
      choose(MG_OUTPUT, "out.kyr");
      toolkit.pumps = 0;
      toolkit.onPump = [&](long pumps) {
        if (pumps != at) return;
        if (event == "no memory") throw std::bad_alloc();
        event == "close" ? toolkit.close(dialog) : toolkit.press(toolkit.dialog(DLG_PROGRESS), PROG_STOP);
      };
      forgetConsole();
      toolkit.press(dialog, MG_MERGE);
      // The pumps stand before each file and each record.
      const auto good = std::array{0U, 0U, 1U, 2U, 2U, 3U}.at(static_cast<std::size_t>(at) - 1);
      const bool stopped = at < 6;
      const bool closes = event == "close";
      const bool wants = stopped && event == "no memory";
      const std::string cut =
          formatText("  ** %s is not complete: %u good record%s.", folder.path("out.kyr").c_str(), good, plural(good));
      EXPECT_EQ(count("  *** Merge aborted by user at DATE."), stopped && !wants) << at;
      EXPECT_EQ(count("  *** There is not enough memory for this job."), wants);
      EXPECT_EQ(count(cut), stopped) << at;
      EXPECT_EQ(xvt_vobj_is_valid(dialog), !closes || !stopped);
      EXPECT_EQ(InputList.size(), closes && stopped ? 0U : 2U);
      EXPECT_EQ(told("out.kyr"), stopped ? formatText("cut 10: %ux2 2", good) + whole.substr(9, 8UL * good) : whole);
    }
  toolkit.onPump = nullptr;
  for (rlim_t room = 0; room < 4096 + 6 * 832; room += 416) {
    std::filesystem::remove("out.kyr");
    choose(MG_OUTPUT, "out.kyr");
    const FileLimit limit(room);
    EXPECT_EQ(run(), "Failed") << room;
    EXPECT_EQ(count("  *** Job Failed."), 1);
    EXPECT_NE(told("out.kyr"), whole);
  }
  toolkit.failNextDialog(DLG_PROGRESS);
  choose(MG_OUTPUT, "new.kyr");
  EXPECT_EQ(run(), "Failed");
  EXPECT_FALSE(std::filesystem::exists("new.kyr"));
  EXPECT_EQ(run(), "Complete");
  EXPECT_EQ(told("new.kyr"), whole);
}

}  // namespace
