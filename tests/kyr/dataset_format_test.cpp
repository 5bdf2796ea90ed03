// What a dataset file promises: any order of writing reads back; what is damaged or cut off is never taken for data.
#include <optional>

#include "libkyr/datasetfile.h"
#include "tests/kyr/dataset_fixture.h"

namespace {

constexpr std::size_t slotSize(int samples) { return (824 + 4 * static_cast<std::size_t>(samples) + 7) / 8 * 8; }

/// A bit of a file turned over, and back again at the end.
class FlippedBit {
 public:
  FlippedBit(std::string path, const std::string& whole, std::size_t place, int bit)
      : path_(std::move(path)), place_(place), was_(whole.substr(place, 1)) {
    patchFile(path_, place_, std::string(1, static_cast<char>(was_[0] ^ (1 << bit))));
  }
  ~FlippedBit() { patchFile(path_, place_, was_); }
  FlippedBit(const FlippedBit&) = delete;
  FlippedBit& operator=(const FlippedBit&) = delete;

 private:
  std::string path_;
  std::size_t place_;
  std::string was_;
};

int pick(std::mt19937& random, int low, int high) { return std::uniform_int_distribution(low, high)(random); }

class DatasetFormat : public DatasetTest {
 protected:
  /// Every trace of an open dataset is the one that was written, or answered as an error and dead.
  /// @return how many were the ones that were written
  int checkAll(Link link, const DatasetCounts& counts) {
    int whole = 0;
    EXPECT_LE(get(link, dsRecords), counts.records);
    EXPECT_LE(get(link, dsTracesPerRecord), counts.traces);
    for (int rec = 1; rec <= counts.records; ++rec)
      for (int number = 1; number <= counts.traces; ++number) {
        const Got got = trace(link, rec, number, counts.samples);
        const bool intact = got.is(TestTrace(rec, number, counts.samples));
        whole += intact ? 1 : 0;
        if (!intact) {
          EXPECT_TRUE(got.result == kyrTraceLost || got.result == kyrNoSuchTrace) << got.result;
          EXPECT_TRUE(got.isDead(killUnreadable));
        }
      }
    return whole;
  }
};

TEST_F(DatasetFormat, ReadsBackWhatWasWrittenInAnyOrder) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::mt19937 random(seed);
    const DatasetCounts counts{pick(random, 1, 6), pick(random, 1, 7), pick(random, 0, 40), pick(random, 0, 3)};
    const Link out = create("a.kyr", counts);
    std::vector<bool> written(static_cast<std::size_t>(counts.records * counts.traces));
    // Now and then a run of neighbours, which the writer keeps together; now and then a look at what is there.
    for (int i = pick(random, 0, 30); i > 0; --i) {
      const int rec = pick(random, 1, counts.records);
      const int first = pick(random, 1, counts.traces);
      for (int number = first; number <= pick(random, first, counts.traces); ++number) {
        ASSERT_EQ(put(out, rec, number, counts.samples), kyrOk);
        written[static_cast<std::size_t>((rec - 1) * counts.traces + number - 1)] = true;
      }
      if (i % 5 == 0) {
        ASSERT_TRUE(trace(out, rec, first, counts.samples).is(TestTrace(rec, first, counts.samples))) << seed;
      }
    }
    ASSERT_EQ(CloseFile(record.get(), out), kyrOk);
    const Link in = open("a.kyr");
    ASSERT_TRUE(IsLinkValid(in));
    EXPECT_EQ(get(in, dsRecords), counts.records);
    EXPECT_EQ(get(in, dsTracesPerRecord), counts.traces);
    EXPECT_EQ(get(in, dsSamples), counts.samples);
    for (int rec = 1; rec <= counts.records; ++rec)
      for (int number = 1; number <= counts.traces; ++number) {
        const Got got = trace(in, rec, number, counts.samples);
        if (written[static_cast<std::size_t>((rec - 1) * counts.traces + number - 1)])
          ASSERT_TRUE(got.is(TestTrace(rec, number, counts.samples))) << seed;
        else
          ASSERT_TRUE(got.result == kyrOk && got.isDead(killNeverWritten)) << seed;
        TraceInfo header;
        ASSERT_EQ(HeaderGet(record.get(), in, rec, number, &header), kyrOk);
        ASSERT_EQ(header.words, got.header.words);
      }
    EXPECT_TRUE(lines().empty()) << lines().front();
    CloseFile(record.get(), in);
  }
}

TEST_F(DatasetFormat, CutAtAnyByteGivesTheWholeTracesBeforeIt) {
  const DatasetCounts counts{3, 4, 5, 0};
  const Link out = create("a.kyr", counts);
  putAll(out, counts);
  ASSERT_EQ(trace(out, 1, 1, counts.samples).result, kyrOk);  // brings what is held to the file
  const std::string unclosed = readFile("a.kyr");
  ASSERT_EQ(CloseFile(record.get(), out), kyrOk);
  const std::string closed = readFile("a.kyr");
  ASSERT_EQ(closed.size(), 4096 + 12 * slotSize(5));
  ASSERT_EQ(unclosed.size(), closed.size());
  for (const std::string& whole : {closed, unclosed}) {
    writeFile("cut.kyr", whole);
    for (std::size_t size = whole.size() + 1; size-- > 0;) {
      lines().clear();
      ProcessRecordPtr fresh(NewProcessRecord());
      fresh->consoleLine = record->consoleLine;
      record.swap(fresh);
      std::filesystem::resize_file("cut.kyr", size);
      const Link link = open("cut.kyr");
      const int traces = size < 4096 ? 0 : static_cast<int>((size - 4096) / slotSize(5));
      ASSERT_EQ(IsLinkValid(link), traces > 0) << size;
      if (traces == 0) {
        ASSERT_EQ(link.value, size < 8 ? kyrNotSeismic : kyrDiskError) << size;
        continue;
      }
      const bool complete = traces == 12 && whole == closed;
      ASSERT_EQ(lines().empty(), complete) << size;
      ASSERT_EQ(checkAll(link, counts), traces) << size;
      ASSERT_EQ(get(link, dsRecords), (traces + 3) / 4);
      if (!complete) {
        ASSERT_TRUE(said(whole == closed ? "cut.kyr is not complete: " : "cut.kyr was not closed properly: "));
      }
    }
  }
}

TEST_F(DatasetFormat, EveryFlippedBitOfTheHeaderIsNoticed) {
  make("a.kyr", {2, 2, 3, 0});
  const std::string whole = readFile("a.kyr");
  for (std::size_t place = 0; place < 4096; ++place)
    for (const int bit : {0, static_cast<int>(place % 8), 7}) {
      const FlippedBit flip("a.kyr", whole, place, bit);
      const Link link = open("a.kyr");
      ASSERT_FALSE(IsLinkValid(link)) << place;
      if (place < 8)
        ASSERT_EQ(link.value, kyrNotSeismic);
      else if (place >= 12 && place < 16 && (place > 12 || bit > 0))
        ASSERT_EQ(link.value, kyrWrongVersion) << place;  // the oldest version that reads it, raised
      else
        ASSERT_EQ(link.value, kyrDiskError) << place;
    }
}

TEST_F(DatasetFormat, EveryFlippedByteOfATraceCostsThatTraceAlone) {
  const DatasetCounts counts{2, 2, 3, 0};
  make("a.kyr", counts);
  const std::string whole = readFile("a.kyr");
  const std::size_t begin = 4096 + slotSize(3);
  for (std::size_t place = begin; place < begin + slotSize(3); ++place) {
    const FlippedBit flip("a.kyr", whole, place, static_cast<int>(place % 8));
    const Link link = open("a.kyr");
    ASSERT_TRUE(IsLinkValid(link));
    for (int again = 0; again < (place == begin ? 10 : 1); ++again)
      ASSERT_EQ(trace(link, 1, 2, 3).result, kyrTraceLost) << place - begin;
    ASSERT_EQ(checkAll(link, counts), 3) << place - begin;
    TraceInfo header;
    const bool inHead = place - begin < 16 || (place - begin >= 24 && place - begin < 824);
    if (inHead || place - begin < 24) continue;
    ASSERT_EQ(HeaderGet(record.get(), link, 1, 2, &header), kyrOk);
    ASSERT_EQ(header.words, TestTrace(1, 2, 3).header.words);
  }
  EXPECT_TRUE(said("  *** Trace 2 of record 1 of " + folder.path("a.kyr") + " cannot be read: it is damaged"));
  // Ten of the eleven have a line of their own.
  const auto own = [](const std::string& line) { return line.starts_with("  *** Trace 2 of record 1 of "); };
  EXPECT_EQ(std::count_if(lines().begin(), lines().end(), own), static_cast<long>(10 + 2 * (slotSize(3) - 1)));
  EXPECT_TRUE(said("  *** 11 reads of traces of " + folder.path("a.kyr") + " failed."));
}

TEST_F(DatasetFormat, SlotsAndPartsOfAnotherPlaceAreNotTaken) {
  const DatasetCounts counts{4, 2, 3, 2};
  make("a.kyr", counts);
  make("b.kyr", counts);
  const std::string own = readFile("a.kyr");
  const std::size_t size = slotSize(3);
  // The second slot's bytes in the first one's place; a slot of a dataset with the same numbers.
  writeFile("a.kyr", own.substr(0, 4096) + own.substr(4096 + size, size) + own.substr(4096 + size));
  EXPECT_EQ(checkAll(open("a.kyr"), counts), 7);
  writeFile("a.kyr", own.substr(0, 4096) + readFile("b.kyr").substr(4096, size) + own.substr(4096 + size));
  EXPECT_EQ(checkAll(open("a.kyr"), counts), 7);

  writeFile("a.kyr", own);
  writeFile("a.kyr.002", readFile("b.kyr.002"));
  lines().clear();
  EXPECT_EQ(checkAll(open("a.kyr"), counts), 4);
  EXPECT_TRUE(said("a.kyr.002 is missing, or no part of the dataset."));
  EXPECT_EQ(open("b.kyr.002").value, kyrNotSeismic);
}

TEST_F(DatasetFormat, SpreadsOverPartsAndTakesThemBackWhenItShrinks) {
  const DatasetCounts counts{7, 2, 4, 3};
  make("a.kyr", counts);
  EXPECT_EQ(readFile("a.kyr").size(), 4096 + 6 * slotSize(4));
  EXPECT_EQ(readFile("a.kyr.003").size(), 4096 + 2 * slotSize(4));
  EXPECT_EQ(checkAll(open("a.kyr"), counts), 14);

  std::filesystem::remove("a.kyr.003");
  const Link cut = open("a.kyr");
  EXPECT_EQ(get(cut, dsRecords), 6);
  EXPECT_EQ(checkAll(cut, counts), 12);
  CloseFile(record.get(), cut);

  make("gap.kyr", counts);
  std::filesystem::resize_file("gap.kyr", 4096 + slotSize(4));
  const Link gap = open("gap.kyr");
  EXPECT_EQ(checkAll(gap, counts), 9);
  EXPECT_TRUE(said("gap.kyr is not complete: at most 9 of 14 traces can be read, in 7 of 7 records."));
  CloseFile(record.get(), gap);

  const Link out = create("c.kyr", counts);
  putAll(out, {4, 1, 4, 3});
  EXPECT_EQ(set(out, dsRecords, 3), kyrTooLate) << "record 4 would be gone";
  EXPECT_EQ(set(out, dsTracesPerRecord, 0), kyrTooLate);
  EXPECT_TRUE(said("c.kyr cannot be cut to 3 records: number 4 was written."));
  ASSERT_EQ(set(out, dsRecords, 4), kyrOk);
  ASSERT_EQ(set(out, dsTracesPerRecord, 1), kyrOk);
  ASSERT_EQ(CloseFile(record.get(), out), kyrOk);
  EXPECT_FALSE(std::filesystem::exists("c.kyr.003"));
  lines().clear();
  const Link in = open("c.kyr");
  EXPECT_EQ(get(in, dsRecords), 4);
  EXPECT_EQ(checkAll(in, {4, 1, 4, 3}), 4);
  EXPECT_TRUE(lines().empty());
}

TEST_F(DatasetFormat, ADatasetBeingWrittenCanBeReadAndNotWrittenByOthers) {
  constexpr int kLong = 4096;  // longer than the pages in which a file system keeps holes
  const Link out = create("a.kyr", {3, 2, kLong, 0});
  ASSERT_EQ(put(out, 3, 2, kLong), kyrOk);
  ASSERT_EQ(trace(out, 3, 2, kLong).result, kyrOk);  // brings what is held to the file
  ProcessRecordPtr other(NewProcessRecord());
  other->consoleLine = record->consoleLine;
  record.swap(other);
  Link link = open("a.kyr");
  EXPECT_TRUE(said("a.kyr was not closed properly: at most 1 of 6 traces can be read, in 3 of 3 records."));
  EXPECT_EQ(checkAll(link, {3, 2, kLong, 0}), 1);
  CloseFile(record.get(), link);
  SetNumberOfOutputs(record.get(), 1);
  const auto announceIt = [&] {
    return NewOutputSeismicFile(&link, record.get(), folder.path("a.kyr").c_str(), 0, kStackedData, 0, 1);
  };
  EXPECT_EQ(announceIt(), kyrInUse);
  EXPECT_TRUE(said("  *** Error: " + folder.path("a.kyr") + " is being written by another job or program."));
  DatasetFile changing(folder.path("a.kyr"), [](const std::string& /*line*/) {});
  EXPECT_EQ(changing.openUpdate(), kyrInUse);
  other.reset();
  EXPECT_EQ(changing.openUpdate(), kyrOk);
  EXPECT_EQ(announceIt(), kyrInUse);
  changing.close();
  EXPECT_EQ(announceIt(), kyrOk);
}

TEST_F(DatasetFormat, OnlyPartsOfTheOverwrittenDatasetAreWrittenOverOrRemoved) {
  make("a.kyr", {7, 2, 4, 3});
  make("a.kyr", {5, 2, 4, 3});
  const Link in = open("a.kyr");
  EXPECT_EQ(checkAll(in, {5, 2, 4, 3}), 10);
  CloseFile(record.get(), in);
  EXPECT_FALSE(std::filesystem::exists("a.kyr.003"));
  writeFile("a.kyr.003", "mine");
  make("a.kyr", {1, 1, 4, 0});
  EXPECT_FALSE(std::filesystem::exists("a.kyr.002"));
  EXPECT_EQ(readFile("a.kyr.003"), "mine");

  const std::string before = readFile("a.kyr");
  std::filesystem::create_symlink("nowhere", "b.kyr.002");
  for (const std::string name : {"a.kyr", "b.kyr"}) {
    const Link out = announce(name, {7, 2, 4, 3});
    EXPECT_EQ(EndInit(record.get()), kyrDiskError);
    EXPECT_EQ(CloseFile(record.get(), out), kyrDiskError);
  }
  EXPECT_TRUE(said("a.kyr.003 is there already, and no part of it."));
  EXPECT_TRUE(said("b.kyr.002 is there already, and no part of it."));
  EXPECT_EQ(readFile("a.kyr"), before);
  EXPECT_FALSE(std::filesystem::exists("a.kyr.002"));
  EXPECT_FALSE(std::filesystem::exists("b.kyr"));
}

TEST_F(DatasetFormat, HostileCountsAreErrors) {
  make("a.kyr", {2, 2, 3, 0});
  const std::string whole = readFile("a.kyr");
  constexpr int most = std::numeric_limits<int>::max();
  const std::vector<DatasetShape> hostile{
      {most, most, most, kMaxSamples, 0},  // past 64 bits
      {most, most, most, 3, 0},            // past 63
      {1 << 30, 2, 2, 1 << 27, 0},         // past the file, in bytes
      {2, 2, 2, kMaxSamples, 0},           // not one whole trace in the file
      {2, 2, 2, kMaxSamples + 1, 0},
      {2, 2, 2, most, 0},
      {2, 3, 2, 3, 0},  // more traces than places
      {-1, 2, 2, 3, 0},
      {2, -1, 2, 3, 0},
      {2, 2, 2, -1, 0},
      {2, 2, 2, 3, -1},
      {1000, 2, 2, 3, 1},  // too many files
      {most, 0, 0, 3, 0},  // loops that no int ends
      {0, most, most, 3, 0},
  };
  for (const DatasetShape& shape : hostile) {
    writeFile("b.kyr", withHeader(whole, [&](DatasetHeader& header) { header.setShape(shape); }));
    EXPECT_EQ(open("b.kyr").value, kyrDiskError) << shape.records << " " << shape.samples;
  }
  // Where the counts pass the file's end but traces are there, callers are told what there is.
  for (const DatasetShape& shape : {DatasetShape{most - 1, 2, 2, 3, 0}, DatasetShape{most - 1, 2, 2, 3, most / 2}}) {
    writeFile("b.kyr", withHeader(whole, [&](DatasetHeader& header) { header.setShape(shape); }));
    EXPECT_EQ(get(open("b.kyr"), dsRecords), 2);
  }
  writeFile("b.kyr", withHeader(whole, [](DatasetHeader& header) { header.setShape({1, most - 1, most, 3, 0}); }));
  const Link link = open("b.kyr");
  EXPECT_EQ(get(link, dsRecords), 1);
  EXPECT_EQ(get(link, dsTracesPerRecord), 4);
  EXPECT_EQ(get(link, dsTotalTraces), 4);
  const int strange = 77;  // counts that follow from others do, whatever the file says
  writeFile("b.kyr", withHeader(whole, [&](DatasetHeader& header) {
              SetDSProperty(dsTotalTraces, longIntType, gUnknownUnits, &strange, &header.org);
            }));
  EXPECT_EQ(get(open("b.kyr"), dsTotalTraces), 4);
  // Counts of no trace at all reserve nothing.
  for (const DatasetShape& shape : {DatasetShape{0, 2, 2, kMaxSamples, 0}, DatasetShape{most - 1, 0, 0, 1 << 23, 0},
                                    DatasetShape{0, most - 1, most, 3, 0}}) {
    writeFile("b.kyr", withHeader(whole, [&](DatasetHeader& header) { header.setShape(shape); }));
    const Link none = open("b.kyr");
    EXPECT_EQ(get(none, dsRecords), 0);
    EXPECT_LE(get(none, dsSamples), 1 << 22);
    EXPECT_LE(get(none, dsTracesPerRecord), 1 << 22);
  }
}

TEST_F(DatasetFormat, AHeaderCutOffIsDamagedAlsoWhereItEndsInZeros) {
  make("a.kyr", {0, 0, 3, 0});
  std::string bytes = readFile("a.kyr");
  while (bytes.back() != 0) bytes = withHeader(bytes, [](DatasetHeader& header) { ++header.id; });
  writeFile("a.kyr", bytes);
  EXPECT_TRUE(IsLinkValid(open("a.kyr")));
  bytes.pop_back();
  writeFile("a.kyr", bytes);
  EXPECT_EQ(open("a.kyr").value, kyrDiskError);
}

TEST_F(DatasetFormat, ZerosOverTheHeadOfATraceAreDamage) {
  make("a.kyr", {1, 2, 3, 0});
  patchFile("a.kyr", 4096, std::string(824, '\0'));
  const Link in = open("a.kyr");
  TraceInfo header{};
  EXPECT_EQ(HeaderGet(record.get(), in, 1, 1, &header), kyrTraceLost);
  EXPECT_EQ(header.words[trKillFlag], static_cast<std::uint32_t>(killUnreadable));
  EXPECT_EQ(checkAll(in, {1, 2, 3, 0}), 1);
}

TEST_F(DatasetFormat, TheOpeningTellsWhyNot) {
  make("unstacked.kyr", {1, 1, 1, 0});
  make("stack.kyr", {1, 1, 1, 0}, kStackedData);
  make("radar.kyr", {1, 1, 1, 0}, kRadarData);
  const std::string bytes = readFile("stack.kyr");
  writeFile("later.kyr", std::string(bytes).replace(12, 1, "\2"));
  writeFile("bricks.kyr", withHeader(bytes, [](DatasetHeader& header) { header.layout = 2; }));
  writeFile("strange.kyr", withHeader(bytes, [](DatasetHeader& header) { header.type = 99; }));
  writeFile("text.kyr", std::string(5000, 'x'));
  writeFile("empty.kyr", "");
  std::filesystem::create_directory("folder.kyr");
  struct Case {
    const char* name;
    int accepted;
    int value;  // 1: valid
  };
  for (const Case& c : std::vector<Case>{{"unstacked.kyr", kAnySeismicType, 1},
                                         {"unstacked.kyr", kStackedData, kyrNotTwoD},
                                         {"unstacked.kyr", brickedTimeStack, kyrOtherType},
                                         {"unstacked.kyr", kRadarData, kyrNotRadar},
                                         {"stack.kyr", kAnySeismicType, 1},
                                         {"stack.kyr", kStackedData, 1},
                                         {"radar.kyr", kRadarData, 1},
                                         {"radar.kyr", kAnySeismicType, kyrNotSeismic},
                                         {"radar.kyr", kStackedData, kyrNotSeismic},
                                         {"later.kyr", kAnySeismicType, kyrWrongVersion},
                                         {"bricks.kyr", kAnySeismicType, kyrNotTwoD},
                                         {"strange.kyr", kAnySeismicType, kyrNotSeismic},
                                         {"text.kyr", kAnySeismicType, kyrNotSeismic},
                                         {"empty.kyr", kAnySeismicType, kyrNotSeismic},
                                         {"folder.kyr", kAnySeismicType, kyrDiskError},
                                         {"none.kyr", kAnySeismicType, kyrDiskError}}) {
    const Link link = open(c.name, c.accepted);
    EXPECT_EQ(IsLinkValid(link) ? 1 : link.value, c.value) << c.name << " as " << c.accepted;
  }
  EXPECT_TRUE(lines().empty());  // the caller's words, not the library's
}

// What was collected reaches the disk before a read: when that fails the output has failed, whatever comes later.
TEST_F(DatasetFormat, AWriteThatFailsInsideAReadFailsTheOutput) {
  for (const bool withSamples : {false, true}) {
    const DatasetCounts counts{2, 4, 10, 0};
    const Link out = create("a.kyr", counts);
    for (int number = 1; number <= 4; ++number) EXPECT_EQ(put(out, 1, number, 10), kyrOk);
    TraceInfo header{};
    {
      const FileLimit full(4096);
      EXPECT_EQ(withSamples ? trace(out, 1, 1, 10).result : HeaderGet(record.get(), out, 1, 1, &header), kyrDiskError);
    }
    EXPECT_EQ(trace(out, 1, 2, 10).result, kyrTraceLost);  // given up, not "never written"
    EXPECT_EQ(put(out, 2, 1, 10), kyrDiskError);
    EXPECT_EQ(CloseFile(record.get(), out), kyrDiskError);
    EXPECT_TRUE(said("  *** Error writing to " + folder.path("a.kyr")));
    EXPECT_EQ(readFile("a.kyr").size(), 4096U);
    EXPECT_EQ(open("a.kyr").value, kyrDiskError);
  }
}

// A disk that is full at every size of the file: an error at the latest at the closing, said once, and no closed mark.
TEST_F(DatasetFormat, AFullDiskIsAnErrorAndLeavesNoClosedMark) {
  const DatasetCounts counts{3, 4, 90, 0};
  const std::size_t full = 4096 + 12 * slotSize(90);
  for (std::size_t room = 4096; room < full; room += 601) {
    lines().clear();
    const Link out = create("a.kyr", counts);
    std::optional<FileLimit> disk(room);
    int accepted = 0;
    for (int rec = 1; rec <= counts.records; ++rec)
      for (int number = 1; number <= counts.traces; ++number) {
        accepted += put(out, rec, number, counts.samples) == kyrOk ? 1 : 0;
        if (number == 2) (void)trace(out, rec, 1, counts.samples);  // now and then to the disk
      }
    EXPECT_EQ(CloseFile(record.get(), out), kyrDiskError) << room;
    disk.reset();
    EXPECT_TRUE(said("a.kyr")) << room;
    ProcessRecordPtr fresh(NewProcessRecord());
    fresh->consoleLine = record->consoleLine;
    record.swap(fresh);
    const Link in = open("a.kyr");
    if (!IsLinkValid(in)) continue;
    EXPECT_TRUE(said("was not closed properly")) << room;
    EXPECT_LE(checkAll(in, counts), accepted);
    CloseFile(record.get(), in);
  }
}

}  // namespace
