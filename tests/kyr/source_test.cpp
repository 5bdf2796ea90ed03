// Sources that others than the library give to a record: read through links as datasets are, in whatever way they fail.
#include <array>
#include <stdexcept>

#include "libkyr/streamsource.h"
#include "tests/kyr/dataset_fixture.h"

namespace {

constexpr int kSamples = 3;
constexpr int kThrow = 1000;
constexpr int kGap = 1001;  // a trace that nobody wrote

/// Gives TestTraces at the places that a test says, and its answers.
class Tape : public StreamSource {
 public:
  struct Item {
    int record;
    int trace;
    int answer = kyrOk;
  };
  Tape(const SeisCounts& counts, std::vector<Item> items, std::string file = "")
      : items_(std::move(items)), file_(std::move(file)) {
    const float interval = 0.004F;
    setSeisOrgCounts(&org_, counts);
    SetDSProperty(dsSampleInterval, singleFloatType, gSecondsUnits, &interval, &org_);
  }
  const GeneralSeisDataOrg& org() const override { return org_; }
  int type() const override { return brickedTimeStack; }
  SourceFormat format() const override { return {"mine", 3, 2, 0.004, true}; }
  std::int64_t position(int record, int trace) override { return 100 * record + trace; }
  bool uses(const char* path) const override { return file_ == path; }
  int close() override { return kyrDiskError; }

 private:
  int next(StreamTrace* next) override {
    if (at_ == items_.size()) return kyrNoSuchTrace;
    const Item& item = items_[at_++];
    if (item.answer == kThrow) throw std::runtime_error("no");
    const TestTrace made(item.record, item.trace, kSamples);
    *next = {item.record, item.trace, made.header, made.samples};
    return item.answer;
  }
  std::vector<Item> items_;
  std::string file_;
  std::size_t at_ = 0;
  GeneralSeisDataOrg org_ = newSeisOrg();
};

class Sources : public DatasetTest {
 protected:
  int give(const SeisCounts& counts, std::vector<Tape::Item> items = {}) const {
    return RegisterSource(record.get(), 0, std::make_unique<Tape>(counts, std::move(items), folder.path("out.kyr")));
  }
  /// Reads through the link: each in its turn, each with the answer that it has.
  void reads(Link link, const std::vector<Tape::Item>& asked) const {
    for (const Tape::Item& item : asked) {
      const Got got = trace(link, item.record, item.trace, kSamples);
      const bool isRight = item.answer == kGap    ? got.result == kyrOk && got.isDead(killNeverWritten)
                           : item.answer == kyrOk ? got.is(TestTrace(item.record, item.trace, kSamples))
                                                  : got.result == item.answer && got.isDead(killUnreadable);
      EXPECT_TRUE(isRight) << item.record << ", " << item.trace << ": " << got.result;
    }
  }
};

TEST_F(Sources, BehaveAsDatasetsDo) {
  make("a.kyr", {1, 1, 1, 0});
  for (const SeisCounts& counts : {SeisCounts{-2, 1, 1}, {1, -1, 1}, {1, 1, kMaxSamples + 1}, {1, 1, -1}})
    EXPECT_EQ(give(counts), kyrBadCall);
  ASSERT_EQ(give({9, 9, 9}), kyrOk);
  ASSERT_EQ(give({-1, 5, kSamples}, {{1, 1}}), kyrOk);  // in the other's place
  const auto owner = std::make_shared<int>(0);
  HoldSources(record.get(), owner);
  HoldSources(record.get(), std::make_shared<int>(0));  // they have theirs
  const Link in = open("a.kyr");
  EXPECT_EQ(std::pair(GetInSeismicType(record.get(), in), get(in, dsRecords)), std::pair(int{brickedTimeStack}, -1));
  EXPECT_EQ(std::pair(get(in, dsTotalTraces), get(in, dsLargestRecord)), std::pair(-1, 5));
  SourceFormat format;
  ASSERT_EQ(GetSourceFormat(record.get(), in, &format), kyrOk);
  EXPECT_TRUE(format.description == "mine" && GetTracePosition(record.get(), in, 4, 2) == 402);
  const TraceInfo header{};
  EXPECT_EQ(TracePut(record.get(), in, 1, 1, TestTrace(1, 1, kSamples).samples.data(), &header), kyrTooLate);
  EXPECT_EQ(set(in, 120, 1), kyrTooLate);

  Link out;
  SetNumberOfOutputs(record.get(), 1);
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), folder.path("out.kyr").c_str(), 0, kStackedData, 0, 1), kyrInUse);
  out = announce("b.kyr", {7, 1, 1, 0});
  ASSERT_EQ(CopyBinaryHeader(record.get(), in, out), kyrOk);
  int microseconds = 0;
  GetDatasetProperty(record.get(), out, dsSampleInterval, longIntType, gMicrosecondsUnits, &microseconds);
  EXPECT_EQ(std::pair(microseconds, get(out, dsRecords)), std::pair(4000, 7));
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

TEST_F(Sources, OfATapeAreReadForward) {
  ASSERT_EQ(give({-1, 3, kSamples}, {{1, 1}, {1, 2, kyrTraceLost}, {2, 2}, {2, 3}, {4, 1}}), kyrOk);
  const Link forward = open("none");
  reads(forward, {{1, 1}, {1, 1}, {1, 2, kyrTraceLost}, {1, 2, kyrTraceLost}, {1, 1, kyrTooLate}, {1, 3, kGap}});
  reads(forward, {{1, 4, kyrNoSuchTrace}, {2, 1, kGap}, {2, 2}, {2, 2}, {1, 3, kyrTooLate}, {3, 1, kGap}});
  reads(forward, {{4, 1}, {4, 3, kGap}, {5, 1, kyrNoSuchTrace}});
  // Places that nobody wrote are known without being read.
  ASSERT_EQ(give({-1, 3, kSamples}, {{1, 1}, {2, 2}, {2, 3, kThrow}, {2, 3}}), kyrOk);
  const Link link = open("none");
  const auto from = [&](int rec, int trace) { return TracePlaceFrom(record.get(), link, rec, trace); };
  EXPECT_EQ((std::array{from(1, 1), from(1, 1), from(1, 2), from(2, 1), from(2, 2)}), (std::array{1, 1, 0, 2, 2}));
  EXPECT_EQ(from(2, 3), 3);
  reads(link, {{2, 3, kyrTraceLost}, {2, 3}});
  EXPECT_EQ((std::array{from(2, 4), from(3, 1)}), (std::array{0, 1}));
  // What stands beyond the counts, goes back, fails for good or in an unknown way ends the source; a throw does not.
  for (const Tape::Item& bad : {Tape::Item{2, 4}, {3, 1}, {1, 1}, {2, 1, kyrSourceEnded}}) {
    ASSERT_EQ(give({2, 3, kSamples}, {{1, 1}, bad, {2, 2}}), kyrOk);
    reads(open("none"), {{1, 1}, {2, 1, kyrSourceEnded}, {2, 2, kyrSourceEnded}});
  }
  ASSERT_EQ(give({2, 3, kSamples}, {{1, 1, kThrow}, {1, 1}, {1, 2, -999}}), kyrOk);
  reads(open("none"), {{1, 1, kyrTraceLost}, {1, 1}, {1, 2, kyrTraceLost}});
}

}  // namespace
