// Sources that others than the library give to a record: read through links as datasets are, in whatever way they fail.
#include "libkyr/source.h"

#include <stdexcept>

#include "libkyr/streamsource.h"
#include "tests/kyr/dataset_fixture.h"

namespace {

constexpr int kSamples = 3;

/// Gives TestTraces, but for those of record 2: each of them fails in its own way.
class FailingSource : public TraceSource {
 public:
  FailingSource(const SeisCounts& counts, std::string file) : file_(std::move(file)) {
    setSeisOrgCounts(&org_, counts);
    const float interval = 0.004F;
    SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  }
  const GeneralSeisDataOrg& org() const override { return org_; }
  int type() const override { return brickedTimeStack; }
  SourceFormat format() const override { return {"mine", 3, 2, 0.004, true}; }
  std::int64_t position(int record, int trace) override { return 100 * record + trace; }
  bool uses(const char* path) const override { return file_ == path; }
  int close() override { return kyrDiskError; }

 private:
  int fetch(int record, int trace, float* samples, TraceInfo* header) override {
    const TestTrace wanted(record, trace, kSamples);
    *header = wanted.header;
    if (samples != nullptr) std::copy(wanted.samples.begin(), wanted.samples.end(), samples);
    if (record == 2 && trace == 1) throw std::runtime_error("no");
    if (record == 2 && trace == 2) throw std::bad_alloc();
    return record == 2 ? std::vector{77, -999, int{kyrSourceEnded}}.at(static_cast<std::size_t>(trace) - 3) : kyrOk;
  }
  std::string file_;
  GeneralSeisDataOrg org_ = newSeisOrg();
};

class Sources : public DatasetTest {
 protected:
  int give(const SeisCounts& counts) const {
    return RegisterSource(record.get(), 0, std::make_unique<FailingSource>(counts, folder.path("out.kyr")));
  }
};

TEST_F(Sources, AreReadAsDatasetsAre) {
  make("a.kyr", {1, 1, 1, 0});
  for (const SeisCounts& counts : {SeisCounts{-2, 1, 1}, {1, -1, 1}, {1, 1, kMaxSamples + 1}, {1, 1, -1}})
    EXPECT_EQ(give(counts), kyrBadCall);
  ASSERT_EQ(give({9, 9, 9}), kyrOk);
  ASSERT_EQ(give({-1, 5, kSamples}), kyrOk);  // in the other's place
  auto owner = std::make_shared<int>(0);
  HoldSources(record.get(), owner);
  HoldSources(record.get(), std::make_shared<int>(0));  // they have theirs
  const Link in = open("a.kyr");
  EXPECT_EQ(std::pair(GetInSeismicType(record.get(), in), get(in, dsRecords)), std::pair(int{brickedTimeStack}, -1));
  EXPECT_EQ(std::pair(get(in, dsTotalTraces), get(in, dsLargestRecord)), std::pair(-1, 5));
  SourceFormat format;
  ASSERT_EQ(GetSourceFormat(record.get(), in, &format), kyrOk);
  EXPECT_TRUE(format.description == "mine" && format.sampleFormat == 3 && format.ascending);
  EXPECT_EQ(GetTracePosition(record.get(), in, 4, 2), 402);

  EXPECT_TRUE(trace(in, 1000, 5, kSamples).is(TestTrace(1000, 5, kSamples)));
  const int answers[] = {kyrTraceLost, kyrNoMemory, kyrTraceLost, kyrTraceLost, kyrSourceEnded, kyrNoSuchTrace};
  for (int number = 1; number <= 6; ++number) {
    const Got got = trace(in, 2, number, kSamples);
    EXPECT_TRUE(got.result == answers[number - 1] && got.isDead(killUnreadable)) << number << ": " << got.result;
  }
  const TraceInfo header{};
  EXPECT_EQ(TracePut(record.get(), in, 1, 1, TestTrace(1, 1, kSamples).samples.data(), &header), kyrTooLate);
  EXPECT_EQ(set(in, 120, 1), kyrTooLate);

  Link out;
  SetNumberOfOutputs(record.get(), 1);
  const auto announceAs = [&](const char* name) {
    return NewOutputSeismicFile(&out, record.get(), folder.path(name).c_str(), 0, kStackedData, 0, 1);
  };
  EXPECT_EQ(announceAs("out.kyr"), kyrInUse);
  ASSERT_EQ(announceAs("b.kyr"), kyrOk);
  ASSERT_EQ(CopyBinaryHeader(record.get(), in, out), kyrOk);
  int microseconds = 0;
  GetDatasetProperty(record.get(), out, dsSampleInterval, longIntType, gMicrosecondsUnits, &microseconds);
  EXPECT_EQ(std::pair(microseconds, get(out, dsRecords)), std::pair(4000, 0));
  EXPECT_EQ(owner.use_count(), 2);
  EXPECT_EQ(CloseFile(record.get(), in), kyrDiskError);
  EXPECT_EQ(owner.use_count(), 1);

  // The path counts again; what waits goes with its owner or with the record.
  EXPECT_EQ(get(open("a.kyr"), dsRecords), 1);
  for (const bool drop : {true, false}) {
    ASSERT_EQ(give({1, 1, 1}), kyrOk);
    HoldSources(record.get(), owner);
    drop ? DropSources(record.get(), owner) : record.reset();
    EXPECT_EQ(owner.use_count(), 1);
  }
}

/// A tape with the places that a test says, and their answers.
class Tape : public StreamSource {
 public:
  struct Item {
    int record;
    int trace;
    int answer = kyrOk;
  };
  Tape(std::vector<Item> items, int records) : items_(std::move(items)) {
    setSeisOrgCounts(&org_, {records, 3, kSamples});
  }
  const GeneralSeisDataOrg& org() const override { return org_; }

 private:
  int next(StreamTrace* next) override {
    if (at_ == items_.size()) return kyrNoSuchTrace;
    const Item& item = items_[at_++];
    TestTrace made(item.record, item.trace, kSamples);
    *next = {item.record, item.trace, made.header, made.samples};
    return item.answer;
  }
  std::vector<Item> items_;
  std::size_t at_ = 0;
  GeneralSeisDataOrg org_ = newSeisOrg();
};

TEST_F(Sources, OfATapeAreReadForward) {
  constexpr int kGap = 1000;  // a trace that nobody wrote
  const auto answer = [](Tape& tape, int rec, int number) {
    Got got;
    got.samples.assign(kSamples, -1.0F);
    got.result = tape.read(rec, number, got.samples.data(), &got.header);
    if (got.isDead(killNeverWritten)) return kGap;
    EXPECT_TRUE(got.result == kyrOk ? got.is(TestTrace(rec, number, kSamples)) : got.isDead(killUnreadable));
    return got.result;
  };
  Tape tape({{1, 1}, {1, 2, kyrTraceLost}, {2, 2}, {2, 3}, {4, 1}}, -1);
  const Tape::Item asked[] = {{1, 1},
                              {1, 1},
                              {1, 2, kyrTraceLost},
                              {1, 2, kyrTraceLost},
                              {1, 1, kyrTooLate},
                              {1, 3, kGap},
                              {2, 1, kGap},
                              {2, 2},
                              {2, 2},
                              {1, 3, kyrTooLate},
                              {3, 1, kGap},
                              {4, 1},
                              {4, 3, kGap},
                              {5, 1, kyrNoSuchTrace}};
  for (const Tape::Item& item : asked) EXPECT_EQ(answer(tape, item.record, item.trace), item.answer) << item.record;

  // What stands beyond the counts, goes back, or fails for good ends the source.
  for (const Tape::Item& bad : {Tape::Item{2, 4}, {3, 1}, {1, 1}, {2, 1, kyrSourceEnded}}) {
    Tape ending({{1, 1}, bad, {2, 2}}, 2);
    EXPECT_EQ(answer(ending, 1, 1), kyrOk);
    EXPECT_EQ(answer(ending, 2, 1), kyrSourceEnded) << bad.trace;
    EXPECT_EQ(answer(ending, 2, 2), kyrSourceEnded);
  }
}

}  // namespace
