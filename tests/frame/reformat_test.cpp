// The run of a reformat over a source of a test's own: every output, what is left out, what cannot be read, what ends
// it.
#include "quarlo/tapelib/frame/reformatloop.h"

#include <array>
#include <set>

#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/frame/formatblocks.h"
#include "tests/support/segy_reader.h"
#include "tests/support/units_fixture.h"

namespace {

using Place = std::pair<int, int>;

constexpr int kSamples = 4;

/// Records of traces with field files, a gap, a dead, an auxiliary trace and such as cannot be read.
class GivenTraces : public TraceSource {
 public:
  struct Gift {
    int announced = 2;  // records; -1 as of a tape
    int records = 2;
    std::set<Place> lost{};
    Place end{0, 0};  // where the source ends
  };
  explicit GivenTraces(Gift gift) : gift_(std::move(gift)) {
    setSeisOrgCounts(&org_, {gift_.announced, 4, kSamples});
    const float interval = 0.0005F;
    SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  }
  const GeneralSeisDataOrg& org() const override { return org_; }

 private:
  int fetch(int record, int trace, float* samples, TraceInfo* header) override {
    const Place place(record, trace);
    if (record > gift_.records) return kyrNoSuchTrace;
    if (place == gift_.end) return kyrSourceEnded;
    if (gift_.lost.contains(place)) return kyrTraceLost;
    if (trace == 3) {
      makeDead(kSamples, samples, header, killNeverWritten);
      return kyrOk;
    }
    *header = {};
    const int type = trace == 4 ? 6 : 1;
    const int file = 100 + record;
    const int kill = trace == 2 ? int{killOther} : 0;
    SetTraceProperty(trTraceType, longIntType, gUnknownUnits, &type, header);
    SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &file, header);
    SetTraceProperty(trChannel, longIntType, gUnknownUnits, &trace, header);
    SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &kill, header);
    for (int i = 0; i < kSamples; ++i) samples[i] = static_cast<float>(1000 * record + 10 * trace + i);
    return kyrOk;
  }

  Gift gift_;
  GeneralSeisDataOrg org_ = newSeisOrg();
};

class ReformatRunTest : public UnitsTest {
 protected:
  ReformatRunTest() {
    SetDevUnit(record.get(), units);
    units[1].type = UT_DISK;
    units[1].fs = specOf("out");
    how.head = {KYR_SEGY_OUTPUT, sizeof how, KYR_BLOCK_VERSION};
    copyText(how.description, std::string(QUARLO_FORMATS) + "/segy-rev1.txt");
    how.sampleFormat = 5;
    how.deadTraces = 1;
  }

  /// All three phases, as far as they get. @return the answer of the last
  int run(int type, GivenTraces::Gift gift, int most = 2) {
    forgetConsole();
    record->diskFileOutputType = type;
    const KyrDatasetOutput dataset = {{KYR_DATASET_OUTPUT, sizeof dataset, KYR_BLOCK_VERSION}};
    const void* const block = type == KYR_ID_SEGY ? static_cast<const void*>(&how) : &dataset;
    RegisterSource(record.get(), 0, std::make_unique<GivenTraces>(std::move(gift)));
    SetNumberOfInputs(record.get(), 1);
    ReformatInput input;
    NewInputFile(&input.link, record.get(), "", 0, kAnySeismicType);
    input.told = "A TEST";
    input.records = most;
    input.recordsParameter = "Records at most";
    int answer = 1;
    {
      ReformatRun phases(record.get(), static_cast<const int*>(block), std::move(input));
      answer = phases.begin();
      if (answer == 0) answer = phases.work();
      if (answer == 0) answer = phases.end();
    }
    closeDiskUnit(&units[1]);
    units[1].fs = specOf("out");
    return answer;
  }

  /// The dataset that came out: of every trace its kill flag, or its first sample where it is alive.
  std::string dataset() {
    SetNumberOfInputs(record.get(), 1);
    Link link;
    if (NewInputFile(&link, record.get(), folder.path("out").c_str(), 0, kAnySeismicType) != kyrOk) return "none";
    std::array<int, 2> counts{};
    GetDatasetProperty(record.get(), link, dsRecords, longIntType, gUnknownUnits, &counts[0]);
    GetDatasetProperty(record.get(), link, dsTracesPerRecord, longIntType, gUnknownUnits, &counts[1]);
    std::string told = formatText("%dx%d", counts[0], counts[1]);
    TraceInfo header;
    std::array<float, kSamples> samples{};
    for (int r = 1; r <= counts[0]; ++r)
      for (int t = 1; t <= counts[1]; ++t) {
        TraceGet(record.get(), link, r, t, samples.data(), &header);
        told += IsDead(header) && samples[0] == 0 ? formatText(" -%d", static_cast<int>(header.words[trKillFlag]))
                                                  : formatText(" %.0f", static_cast<double>(samples[0]));
      }
    CloseFile(record.get(), link);
    return told;
  }
  std::string segyFile(const std::string& name = "out") {
    return python(
        "import sys, segyio\nf = segyio.open(sys.argv[1], ignore_geometry=True)\n"
        "print(f.bin[3213], f.bin[3217], f.bin[3221], f.bin[3225], [(h[9], h[13], h[29], int(t[0])) for h, t in "
        "zip(f.header, "
        "f.trace)])",
        folder.path(name));
  }

  ProcessRecordPtr record{NewProcessRecord()};
  KyrSegyOutput how{};
};

TEST_F(ReformatRunTest, ADatasetKeepsPlacesAndTheDead) {
  EXPECT_EQ(run(KYR_ID_DATASET, {}), 0);
  EXPECT_EQ(dataset(), "2x4 1010 1020 -1 1040 2010 2020 -1 2040");
  EXPECT_TRUE(consoleHas("2 records, 6 traces read."));

  // What cannot be read is dead in it, and the run has failed; the file is no whole dataset.
  EXPECT_EQ(run(KYR_ID_DATASET, {.lost = {{1, 1}, {2, 4}}}), 1);
  EXPECT_TRUE(consoleHas("2 traces could not be read.") && consoleHas("  *** Job Failed."));
  forgetConsole();
  EXPECT_EQ(dataset(), "2x4 -2 1020 -2 1040 2010 2020 -2 -2");
  EXPECT_NE(consoleWithoutDates(), Lines{});

  // With the stop at errors the first one ends it.
  units->inputAbort = true;
  EXPECT_EQ(run(KYR_ID_DATASET, {.lost = {{2, 1}}}), 1);
  EXPECT_TRUE(consoleHas("1 record, 3 traces read."));
}

TEST_F(ReformatRunTest, RecordsThatNobodyKnowsComeUpToTheAnnouncedNumber) {
  EXPECT_EQ(run(KYR_ID_DATASET, {.announced = -1}, 7), 0);
  EXPECT_EQ(dataset(), "2x4 1010 1020 -1 1040 2010 2020 -1 2040");
  EXPECT_EQ(run(KYR_ID_DATASET, {.announced = -1, .records = 3}, 2), 1);
  EXPECT_TRUE(consoleHas("  *** The input has more than 2 records: raise \"Records at most\"."));
  EXPECT_EQ(run(KYR_ID_DATASET, {.announced = -1, .end = {2, 2}}, 7), 1);
  EXPECT_EQ(dataset().substr(0, 26), "2x4 1010 1020 -2 1040 2010");
  EXPECT_EQ(run(KYR_ID_DATASET, {.announced = 0}), 1);
  EXPECT_TRUE(consoleHas("  *** The input has no traces.") && consoleHas("0 records, 0 traces read."));
}

TEST_F(ReformatRunTest, SegyOnDiskIsReadByAnIndependentReader) {
  if (!haveSegyReader()) GTEST_SKIP() << "python3-segyio is not installed";
  EXPECT_EQ(run(KYR_ID_SEGY, {}), 0);
  EXPECT_EQ(segyFile(),
            "4 500 4 5 [(101, 1, 1, 1010), (101, 2, 2, 1020), (101, 4, 6, 1040), (102, 1, 1, 2010), (102, 2, 2, 2020), "
            "(102, 4, 6, 2040)]\n");
  how.deadTraces = 0;
  how.stripAuxiliary = 1;
  how.sampleFormat = 3;
  EXPECT_EQ(run(KYR_ID_SEGY, {.lost = {{1, 1}}}), 1);  // what is dead now is left out with the dead
  EXPECT_EQ(segyFile(), "4 500 4 3 [(102, 1, 1, 2010)]\n");
  EXPECT_TRUE(consoleHas("5 traces left out.") && consoleHas("1 trace written."));
}

TEST_F(ReformatRunTest, AFullDiskCountsWhatItHolds) {
  // Found while traces are written, and at the end.
  for (const int records : {200, 40}) {
    const FileLimit full(3600 + 256 * 100 + 77);
    EXPECT_EQ(run(KYR_ID_SEGY, {.announced = records, .records = records}), 1);
    EXPECT_TRUE(consoleHas("100 traces written.")) << records;
    EXPECT_EQ(readFile(folder.path("out")).size(), 3600U + 256 * 100);
  }
  // Of a dataset 20 records, one place of four in each without a trace.
  for (const int records : {200, 21}) {
    const FileLimit full(4096 + 840 * 80 + 77);
    EXPECT_EQ(run(KYR_ID_DATASET, {.announced = records, .records = records}), 1);
    EXPECT_TRUE(consoleHas("60 traces written.")) << records;
  }
}

TEST_F(ReformatRunTest, TapesAreContinuedTogetherWhenOneIsFull) {
  if (!haveSegyReader()) GTEST_SKIP() << "python3-segyio is not installed";
  for (const char* name : {"a.tap", "b.tap"}) makeCartridge(name, {});
  load(0, "a.tap");
  load(1, "b.tap", "capacity = 4000\n");
  units[1] = UnitStruct{};
  openOutputTapes({0, 1});
  nextOutputIs("c.tap", 0);
  nextOutputIs("d.tap", 1);
  EXPECT_EQ(run(KYR_ID_SEGY, {}), 0);
  tlv_tape_close(units, kAllOutputs);
  const Tape first = tapeIn("a.tap");
  EXPECT_EQ(first, tapeIn("b.tap"));
  EXPECT_EQ(tapeIn("c.tap"), tapeIn("d.tap"));
  // A file of what stands before the marks of both, the second without its reel headers.
  std::string all;
  for (const std::string& item : first) all += item;
  const Tape second = tapeIn("c.tap");
  ASSERT_GT(second.size(), 2U);
  EXPECT_EQ(second[1].substr(0, 400), first[1]);
  for (std::size_t i = 2; i < second.size(); ++i) all += second[i];
  writeFile(folder.path("joined"), all);
  EXPECT_EQ(segyFile("joined"),
            "4 500 4 5 [(101, 1, 1, 1010), (101, 2, 2, 1020), (101, 4, 6, 1040), (102, 1, 1, 2010), (102, 2, 2, 2020), "
            "(102, 4, 6, 2040)]\n");
  EXPECT_TRUE(consoleHas("Continuing output on tape 2.") && consoleHas("2 output tapes."));
}

TEST_F(ReformatRunTest, ACheckWritesNothingAndTells) {
  units[1] = UnitStruct{};
  EXPECT_EQ(run(KYR_CHECK_RUN, {}), 0);
  expectSaid({"A run would make 2 records of at most 4 traces, 4 samples at 0.5 ms.",
              "The smallest record has 3 traces; places that nobody wrote fill the others up."});
  EXPECT_TRUE(consoleHas("Field files from 101 to 102.") && consoleHas("2 dead traces.") &&
              consoleHas("2 auxiliary traces."));
  EXPECT_FALSE(std::filesystem::exists(folder.path("out")));
}

TEST_F(ReformatRunTest, StrangersBlocksAndAStopEndItTruly) {
  how.head.size = 12;
  EXPECT_EQ(run(KYR_ID_SEGY, {}), 1);
  EXPECT_TRUE(consoleHas("  *** The parameters of the SEG Y output are not those of this program's module."));
  how.head.size = sizeof how;
  units[1].fs = specOf("none/out");
  EXPECT_EQ(run(KYR_ID_SEGY, {}), 1);
  EXPECT_EQ(run(KYR_ID_DATASET, {}), 0);
  EXPECT_EQ(run(77, {}), 1);
  toolkit.onPump = [this, left = 5](long) mutable {
    if (--left == 0) toolkit.press(toolkit.windowTitled("Reformat Progress"), PROG_STOP);
  };
  EXPECT_EQ(run(KYR_ID_DATASET, {}), 1);
  EXPECT_TRUE(consoleHas("  *** Reformat aborted by user at DATE."));
  EXPECT_FALSE(consoleHas("  *** Job Failed."));
}

}  // namespace
