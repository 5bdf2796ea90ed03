// Field formats on tapes as sources of traces: what becomes of marks, tapes, labels, headers and blocks that cannot be
// read.
#include <gtest/gtest.h>

#include "quarlo/tapelib/frame/segdtapesource.h"
#include "quarlo/tapelib/frame/segytapesource.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/segy_files.h"
#include "tests/support/segy_shipped.h"
#include "tests/support/units_fixture.h"

namespace {

constexpr int kSamples = 5;

class TapeSourceTest : public UnitsTest {
 protected:
  TapeSourceTest() { SetDevUnit(record_.get(), units); }

  /// Puts a tape into the drive and opens it.
  void put(const Tape& tape, const std::vector<std::size_t>& bad = {}) {
    closeUnits();
    putIn(0, "in.tap", tape, bad);
    openInputTape();
    said_.clear();
    reason_.clear();
  }
  /// What a trace is called.
  virtual int nameOf(const TraceInfo& header) const { return static_cast<int>(property(header, trTraceNumber)); }
  /// All of a source, record by record: the traces' names, or minus the kill flag of what is dead; how it ends.
  std::string all(TraceSource* source) {
    if (source == nullptr) return "none: " + reason_;
    const SeisCounts counts = seisOrgCounts(source->org());
    std::vector<float> samples(static_cast<std::size_t>(counts.samples));
    TraceInfo header;
    std::string found;
    int result = kyrOk;
    for (int record = 1; result != kyrNoSuchTrace && result != kyrSourceEnded; ++record) {
      for (int trace = 1; trace <= counts.tracesPerRecord; ++trace) {
        result = source->read(record, trace, samples.data(), &header);
        if (result == kyrNoSuchTrace || result == kyrSourceEnded) break;
        if (trace == 1) found += found.empty() ? "" : " |";
        const auto kill = static_cast<int>(property(header, trKillFlag));
        found += formatText(" %d", kill != 0 ? -kill : nameOf(header));
        EXPECT_EQ(samples[0] == 0, kill != 0);
      }
    }
    const bool isWhole = source->close() == kyrOk;
    return found + (result == kyrNoSuchTrace ? isWhole ? "" : " damaged" : " failed");
  }
  bool said(const std::string& line) const { return std::ranges::find(said_, line) != said_.end(); }

  ProcessRecordPtr record_{NewProcessRecord()};
  Lines said_;
  std::string reason_;
};

// ---- SEG Y --------------------------------------------------------------------------------------------------------

/// A trace of two-byte integers that are all 1.
std::string trace(int number, int fieldFile, int samples = kSamples) {
  std::string bytes = header(240, {{1, 4, static_cast<unsigned>(number)}, {9, 4, static_cast<unsigned>(fieldFile)}});
  for (int i = 0; i < samples; ++i) bytes += std::string("\0\1", 2);
  return bytes;
}
std::string binary(std::initializer_list<HeaderField> more = {}) {
  std::string bytes = header(400, {{17, 2, 4000}, {21, 2, kSamples}, {25, 2, 3}, {13, 2, 2}, {15, 2, 1}});
  for (const HeaderField& field : more)
    bytes.replace(static_cast<std::size_t>(field.byte - 1), static_cast<std::size_t>(field.bytes),
                  header(8, {{1, field.bytes, field.value}}), 0, static_cast<std::size_t>(field.bytes));
  return bytes;
}
const Tape kReel = {std::string(3200, ' '), binary()};

class SegyTapes : public TapeSourceTest {
 protected:
  std::string read(const SegySourceParams& params = {}) {
    const auto say = [this](const std::string& line) { said_.push_back(line); };
    const auto source = SegyTapeSource::open(record_.get(), shipped("segy-rev2.txt"), params, say, &reason_);
    return all(source.get());
  }
};

TEST_F(SegyTapes, HeadersLabelsMarksAndStanzasStandWhereTheyMay) {
  const std::string text(3200, 'C');
  const std::string label = "   1SY1.0RECORD" + std::string(113, ' ');
  const std::string stanza = "((SEG: EndText))" + std::string(3184, ' ');
  const Tape two = {trace(1, 7), trace(2, 7)};
  const struct {
    Tape tape;
    std::string found;
    std::string line = {};
  } table[] = {
      {kReel + two + Tape{trace(3, 8), MARK, MARK, "old"}, " 1 2 -1 | 3 -1 -1"},
      {kReel + two, " 1 2 -1"},
      {Tape{label, MARK} + kReel + two + Tape{MARK, MARK}, " 1 2 -1"},
      {Tape{label, text + binary()} + two, " 1 2 -1"},
      {Tape{text, binary({{305, 2, 2}}), text, text} + two, " 1 2 -1"},
      {Tape{text, binary({{305, 2, 0xFFFF}}), text, stanza} + two, " 1 2 -1"},
      {Tape{text, binary({{305, 2, 3}}), text} + two, " 1 2 -1",
       "3 extended text headers are announced; the tape has 1"},
      {Tape{text, binary({{301, 1, 2}, {329, 4, 0xFFFFFFFF}})} + two + Tape{stanza, text, MARK} + kReel + two,
       " 1 2 -1 | 1 2 -1"},
      // Every file begins a record, the tape's next file of the same field file too.
      {kReel + two + Tape{MARK} + kReel + Tape{trace(3, 7), MARK, MARK}, " 1 2 -1 | 3 -1 -1"},
      {kReel + two + Tape{MARK, text, binary({{17, 2, 2000}}), trace(3, 9)}, " 1 2 failed",
       "  *** tape 1 file 2 block 2: the file that begins here has a sample interval of 2000 us, the first 4000 us: "
       "read it by a run of its own."},
      {kReel + two + Tape{MARK, text, "no header", trace(3, 9)}, " 1 2 failed",
       "  *** tape 1 file 2 block 2: reel headers of 3200 and 400 bytes should stand here, there are 3209 bytes."},
      {kReel + two + Tape{trace(3, 7), trace(4, 7), trace(1, 8)}, " 1 2 3 failed",
       "  *** Record 1, at tape 1 file 1 block 6, has more than 3 traces: raise \"Traces a record at most\"."},
      {kReel + two + Tape{trace(3, 7, 7), trace(1, 8, 4), "stub"}, " 1 2 3 | 1 -2 -1",
       "2 traces have from 4 to 7 samples: padded or cut to the 5 of the first"},
      {kReel + Tape{"stub"} + two, "none: tape 1 file 1 block 3 has 4 bytes, too few for a trace"},
      {Tape{MARK, MARK}, "none: it has no trace"},
      {Tape{text, binary({{13, 4, 0}}), trace(1, 7)},
       "none: the binary header does not say how many traces a record has: give \"Traces a record at most\""},
      {Tape{text, binary({{25, 2, 77}}), trace(1, 7)},
       "none: ", "  *** tape 1 file 1 block 2: sample format code 77 is none that can be read."},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(shortly(row.tape).size());
    put(row.tape);
    toolkit.modals.clear();
    noFurtherTape();
    EXPECT_EQ(read(), row.found);
    EXPECT_TRUE(row.line.empty() || said(row.line)) << row.line << testing::PrintToString(said_);
  }
}

TEST_F(SegyTapes, BlocksThatCannotBeReadAreDeadTracesInTheirPlace) {
  const Tape tape = kReel + Tape{trace(1, 7), trace(2, 7), trace(3, 7), trace(4, 8), trace(5, 8), MARK, MARK};
  const std::pair<std::vector<std::size_t>, std::string> table[] = {
      {{3}, " 1 -2 3 | 4 5 -1"},
      {{4}, " 1 2 -2 | 4 5 -1"},
      {{2, 5}, " -2 2 3 | -2 5 -1"},  // a full record is followed by the next
      {{0}, "none: "},
      {{1}, "none: "},
  };
  for (const auto& [bad, found] : table) {
    put(tape, bad);
    noFurtherTape();
    EXPECT_EQ(read(), found);
    toolkit.modals.clear();
  }
  put(kReel + Tape{trace(1, 7), "1", "2", "3", "4", "5", "6", "7"}, {3, 4, 5, 6, 7, 8});
  EXPECT_EQ(read({.mostTraces = 9}), " 1 -2 -2 -2 -2 -2 failed");
  EXPECT_TRUE(consoleHas("  *** Too many sequential bad blocks. Aborting."));
  put(tape, {3});
  units->inputAbort = true;
  EXPECT_EQ(read(), " 1 failed");
}

TEST_F(SegyTapes, FurtherTapesContinueARecord) {
  const Tape tape = kReel + Tape{trace(1, 7), trace(2, 7), MARK, MARK};
  makeCartridge("next.tap", kReel + Tape{trace(3, 7), trace(4, 8), MARK} + kReel + Tape{trace(5, 9), MARK, MARK});
  put(tape);
  nextInputIs("next.tap");
  noFurtherTape();
  EXPECT_EQ(read(), " 1 2 3 | 4 -1 -1 | 5 -1 -1");
  // One file alone, which goes on on the next tape.
  put(tape);
  nextInputIs("next.tap");
  EXPECT_EQ(read({.oneFile = true}), " 1 2 3 | 4 -1 -1");
  put(tape);
  noFurtherTape();
  EXPECT_EQ(read({.skips = [](int file) { return file == 7; }}), "");
  put(tape + kReel);
  noFurtherTape();
  SegySourceParams single;
  single.choices.records = {"", 1};
  EXPECT_EQ(read(single), " 1 | 2");
}

// ---- SEG D --------------------------------------------------------------------------------------------------------

class SegdTapes : public TapeSourceTest {
 protected:
  /// Field file, channel set and channel.
  int nameOf(const TraceInfo& header) const override {
    return static_cast<int>(100 * property(header, trFieldFile) + 10 * property(header, trSegdChannelSet) +
                            property(header, trChannel));
  }
  std::string read(const KyrSegdInput& how = {}) {
    SegdTapeSource source(record_.get(), how);
    return source.open() == 0 ? all(&source) : "none";
  }
};

TEST_F(SegdTapes, FieldFilesAreRecordsHoweverTheirBlocksAreMade) {
  const FieldFile one{.number = 1, .sets = {{3, 20}, {2, 10}}, .milliseconds = 20};
  FieldFile two = one;
  two.number = 2;
  const std::string head = one.header();
  const std::vector<std::string> traces = one.traces(true);
  const Tape plain = Tape{head} + traces + Tape{MARK};
  const Tape next = Tape{two.header()} + two.traces(true) + Tape{MARK, MARK};
  const std::string label = "   1SD1.0   1FIXED     65536" + std::string(100, ' ');
  const auto with = [&](std::size_t block, std::size_t place, char byte) {
    Tape tape = plain;
    tape[block][place] = byte;
    return tape + next;
  };
  const auto without = [&](std::size_t block) {
    Tape tape = plain;
    tape.erase(tape.begin() + static_cast<std::ptrdiff_t>(block));
    return tape + next;
  };
  KyrSegdInput all{};
  all.auxiliary = all.pad = 1;
  KyrSegdInput few = all;
  few.tape = {0, 4, 0};
  KyrSegdInput single{};
  single.tape.oneFile = 1;
  KyrSegdInput second{};
  second.fieldFiles.leftOutCount = 1;
  second.fieldFiles.leftOut[0] = 1;
  KyrSegdInput seismic = all;
  seismic.sets = 1;
  seismic.setList[0] = 2;
  const struct {
    Tape tape;
    KyrSegdInput how;
    std::string found;
    std::string line = {};
    std::vector<std::size_t> bad = {};
  } table[] = {
      {plain + next, all, " 111 112 113 121 122 | 211 212 213 221 222"},
      {Tape{label, MARK} + plain, all, " 111 112 113 121 122"},
      {plain + next,
       {},
       " 111 112 113 -1 -1 | 211 212 213 -1 -1",
       "  ** 4 traces of channel set 2: 5 samples, 2 ms: left out, the others have 10 samples, 2 ms."},
      {plain + next, seismic, " 121 122 | 221 222"},
      {plain + next, single, " 111 112 113 -1 -1"},
      {plain + next, second, " 211 212 213 -1 -1"},
      {plain + next, few, " 111 112 113 121 failed",
       "  *** tape 1 file 1 block 6, field file 1, has more than 4 traces: raise \"Traces a record at most\"."},
      // Several traces in a block, headers in two, all in one; a block that is filled up, a trailer.
      {Tape{head, traces[0] + traces[1], traces[2] + traces[3] + traces[4], MARK}, all, " 111 112 113 121 122"},
      {Tape{head.substr(0, 100), head.substr(100)} + traces, all, " 111 112 113 121 122"},
      {Tape{joined(plain)}, all, " 111 112 113 121 122"},
      {Tape{head, traces[0] + std::string(30, '\0')} + Tape(traces.begin() + 1, traces.end()) + Tape{"trailer"}, all,
       " 111 112 113 121 122"},
      // What is damaged or missing is told, and the next field file comes.
      {with(2, 2, 0x0A), all, " 111 -2 113 121 122 | 211 212 213 221 222 damaged",
       "  *** tape 1 file 1 block 3, field file 1: byte 2: the scan type of its header is no number (0A)."},
      {without(3), all, " 111 112 121 122 -1 | 211 212 213 221 222 damaged",
       "  *** tape 1 file 1 block 5, field file 1: trace 5 of 5: it is missing."},
      {with(0, 64 + 9, 0x0A), all, " 211 212 213 221 222 damaged",
       "  *** tape 1 file 1 block 1: the number of channels is no number (000A); the field file is passed over."},
      {Tape{"no SEG D, but longer than a header block", MARK} + next, all, " 211 212 213 221 222 damaged"},
      {Tape{head.substr(0, 100), MARK} + next, all, " 211 212 213 221 222 damaged",
       "  *** tape 1 file 1 block 1: the headers end after 100 of 128 bytes."},
      {plain + next, all, " 111 -2 113 121 122 | 211 212 213 221 222 damaged", "", {2}},
      {plain + next, all, " -2 112 113 121 122 | 211 212 213 221 222 damaged", "", {1}},
      {plain + next, all, " 211 212 213 221 222 damaged", "", {0}},
      {Tape{head, traces[0] + traces[1], traces[2] + traces[3], traces[4], MARK},
       all,
       " 111 112 -2 -2 122 damaged",
       "",
       {2}},
      {Tape{label, MARK, MARK}, all, "none", "  *** There is no SEG D trace to read on the input tape."},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(&row - table);
    put(row.tape, row.bad);
    toolkit.modals.clear();
    noFurtherTape();
    forgetConsole();
    EXPECT_EQ(read(row.how), row.found);
    EXPECT_TRUE(row.line.empty() || consoleHas(row.line)) << testing::PrintToString(consoleWithoutDates());
  }
}

TEST_F(SegdTapes, LengthsThatNoHeaderTellsAreThoseOfTheBlocks) {
  const FieldFile one{.number = 1, .sets = {{2, 20}}, .milliseconds = 20};
  for (const int samples : {10, 11, 17}) {
    put({one.header(), one.trace(1, 1, samples), one.trace(1, 2, samples), MARK, MARK});
    SegdTapeSource source(record_.get(), {});
    ASSERT_EQ(source.open(), 0);
    EXPECT_EQ(seisOrgCounts(source.org()).samples, samples);
  }
  // A longer set comes behind the first, with a sample more than its times say, as that has.
  const FieldFile longer{.number = 1, .sets = {{1, 10}, {1, 20}}, .milliseconds = 20};
  put({longer.header(), longer.trace(1, 1, 6), longer.trace(2, 1, 11), MARK, MARK});
  noFurtherTape();
  KyrSegdInput padded{};
  padded.pad = 1;
  EXPECT_EQ(read(padded), " 111 121");
}

TEST_F(SegdTapes, MultiplexedFieldFilesAreHeldAsAWhole) {
  const FieldFile one{.code = 58, .sets = {{3, 20}}};
  Tape scans;
  for (int scan = 0; scan < 10; ++scan)
    scans.push_back("\xFF\xFF\xFF" + std::string(5, '\0') + block(12, static_cast<unsigned>(scan)));
  const auto tapeOfBlocks = [&](int each) {
    Tape tape = {one.header()};
    for (int i = 0; i < 10; i += each) tape.push_back(joined({scans.begin() + i, scans.begin() + i + each}));
    return tape + Tape{MARK, one.header(), joined(scans), MARK, MARK};
  };
  for (const int each : {1, 2, 5}) {
    put(tapeOfBlocks(each));
    toolkit.modals.clear();
    noFurtherTape();
    EXPECT_EQ(read(), " 111 112 113 | 111 112 113");
    put(tapeOfBlocks(each), {2});
    noFurtherTape();
    EXPECT_EQ(read(), " -2 -2 -2 | 111 112 113 damaged");
  }
}

}  // namespace
