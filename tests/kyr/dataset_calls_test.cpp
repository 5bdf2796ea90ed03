// The calls of the data library: links, counts, properties and their conversions, what a job may do when.
#include <cmath>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "tests/kyr/dataset_fixture.h"

namespace {

constexpr int intMax = std::numeric_limits<int>::max();

class DatasetCalls : public DatasetTest {};

TEST_F(DatasetCalls, LinksAreGoodUntilTheyAreClosed) {
  make("a.kyr", {1, 2, 3, 0});
  make("b.kyr", {2, 1, 1, 0});
  const Link first = open("a.kyr");
  EXPECT_EQ(get(first, dsRecords), 1);
  const Link second = open("b.kyr");  // in the first one's place
  EXPECT_NE(first.value, second.value);
  EXPECT_EQ(get(second, dsRecords), 2);
  EXPECT_EQ(CloseFile(record.get(), second), kyrOk);
  const ProcessRecordPtr other(NewProcessRecord());
  for (const Link stale : {first, second, Link{}, Link{0}, Link{kyrDiskError}}) {
    int value = -1;
    TraceInfo header{};
    EXPECT_EQ(GetDatasetProperty(record.get(), stale, dsRecords, longIntType, gUnknownUnits, &value), kyrBadCall);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(HeaderGet(record.get(), stale, 1, 1, &header), kyrBadCall);
    EXPECT_TRUE(IsDead(header));
    EXPECT_EQ(CloseFile(record.get(), stale), kyrBadCall);
  }
  EXPECT_EQ(HeaderGet(other.get(), open("a.kyr"), 1, 1, nullptr), kyrBadCall);

  Link link;
  EXPECT_EQ(NewInputFile(&link, record.get(), folder.path("a.kyr").c_str(), 1, kAnySeismicType), kyrBadCall);
  EXPECT_EQ(NewInputFile(&link, other.get(), folder.path("a.kyr").c_str(), 0, kAnySeismicType), kyrBadCall);
  EXPECT_EQ(link.value, kyrBadCall);
  SetNumberOfInputs(record.get(), 2);
  EXPECT_EQ(NewInputFile(&link, record.get(), folder.path("a.kyr").c_str(), 1, kAnySeismicType), kyrOk);
  const TraceInfo header{};
  EXPECT_EQ(TracePut(record.get(), link, 1, 1, TestTrace(1, 1, 3).samples.data(), &header), kyrTooLate);
  EXPECT_EQ(EndInit(record.get()), kyrOk);

  TraceInfo alive{};
  EXPECT_EQ(TraceGet(record.get(), link, 1, 1, nullptr, &alive), kyrBadCall);
  EXPECT_TRUE(IsDead(alive));
}

TEST_F(DatasetCalls, AnOutputIsNoInputAtTheSameTime) {
  make("a.kyr", {1, 1, 2, 0});
  const std::string before = readFile("a.kyr");
  (void)open("a.kyr");
  SetNumberOfOutputs(record.get(), 2);
  Link out;
  std::filesystem::create_symlink("a.kyr", "link.kyr");
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), "link.kyr", 0, kStackedData, 0, 1), kyrInUse);
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), folder.path("no/b.kyr").c_str(), 0, kStackedData, 0, 1),
            kyrDiskError);
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), "b.kyr", 0, 99, 0, 1), kyrBadCall);
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), "b.kyr", 0, kStackedData, 0, 1), kyrOk);
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), "b.kyr", 1, kStackedData, 0, 1), kyrInUse);
  EXPECT_EQ(open("b.kyr").value, kyrInUse);
  EXPECT_EQ(readFile("a.kyr"), before);

  make("p.kyr", {2, 1, 2, 1});
  (void)open("p.kyr");
  EXPECT_EQ(NewOutputSeismicFile(&out, record.get(), "p.kyr.002", 0, kStackedData, 0, 1), kyrInUse);
}

TEST_F(DatasetCalls, AFileStaysUntilEndInit) {
  make("a.kyr", {1, 1, 2, 0});
  const std::string before = readFile("a.kyr");
  CloseFile(record.get(), announce("a.kyr", {5, 5, 5, 0}));
  EXPECT_EQ(readFile("a.kyr"), before);
  CloseFile(record.get(), announce("new.kyr", {5, 5, 5, 0}));
  EXPECT_FALSE(std::filesystem::exists("new.kyr"));

  const Link wrong = announce("wrong.kyr", {2000, 1, 1, 1});
  EXPECT_EQ(EndInit(record.get()), kyrBadCall);
  EXPECT_TRUE(said("  *** Error creating " + folder.path("wrong.kyr") + ": no dataset can hold 2000 records"));
  EXPECT_EQ(put(wrong, 1, 1, 1), kyrBadCall);
  CloseFile(record.get(), wrong);

  const Link out = announce("b.kyr", {2, 2, 3, 0});
  EXPECT_EQ(put(out, 1, 1, 3), kyrBadCall);
  EXPECT_EQ(EndInit(record.get()), kyrOk);
  for (const auto& [rec, number] : {std::pair{0, 1}, {1, 0}, {3, 1}, {1, 3}, {-1, 1}, {intMax, intMax}})
    EXPECT_EQ(put(out, rec, number, 3), kyrNoSuchTrace);
  record.reset();  // closes as CloseFile does
  record.reset(NewProcessRecord());
  EXPECT_EQ(get(open("b.kyr"), dsTotalTraces), 4);
}

TEST_F(DatasetCalls, CountsAreFreeBeforeEndInitAndCanOnlyShrinkBehindIt) {
  const Link out = announce("a.kyr", {9, 9, 9, 0});
  EXPECT_EQ(set(out, dsTracesPerRecord, 12), kyrOk);
  EXPECT_EQ(set(out, dsTotalTraces, 7), kyrOk);  // they follow from the others
  EXPECT_EQ(set(out, dsLargestRecord, 7), kyrOk);
  EXPECT_EQ(get(out, dsTotalTraces), 108);
  EXPECT_EQ(get(out, dsLargestRecord), 12);
  EXPECT_EQ(set(out, dsRecords, -1), kyrBadCall);
  EXPECT_EQ(set(out, dsRecords, 1), kyrOk);
  ASSERT_EQ(EndInit(record.get()), kyrOk);
  for (int number = 1; number <= 8; ++number) EXPECT_EQ(put(out, 1, number, 9), kyrOk);
  EXPECT_EQ(set(out, dsTracesPerRecord, 13), kyrTooLate);
  EXPECT_EQ(set(out, dsRecords, 2), kyrTooLate);
  EXPECT_EQ(set(out, dsSamples, 8), kyrTooLate);
  EXPECT_EQ(set(out, dsSamples, 9), kyrOk);
  EXPECT_EQ(set(out, dsTracesPerRecord, 8), kyrOk);
  EXPECT_EQ(CloseFile(record.get(), out), kyrOk);
  const Link in = open("a.kyr");
  EXPECT_EQ(get(in, dsTotalTraces), 8);
  EXPECT_EQ(set(in, dsTracesPerRecord, 8), kyrTooLate);
  for (int number = 1; number <= 8; ++number) EXPECT_TRUE(trace(in, 1, number, 9).is(TestTrace(1, number, 9)));
  EXPECT_EQ(trace(in, 1, 9, 9).result, kyrNoSuchTrace);
  EXPECT_TRUE(lines().empty());
}

TEST_F(DatasetCalls, PropertiesOfADatasetAndWhatIsCopiedOfThem) {
  const Link one = announce("a.kyr", {1, 1, 1, 0}, brickedTimeStack);
  const float interval = 0.002F;
  const float offset = -12.5F;
  EXPECT_EQ(SetDatasetProperty(record.get(), one, dsSampleInterval, singleFloatType, gSecondsUnits, &interval), kyrOk);
  EXPECT_EQ(SetDatasetProperty(record.get(), one, dsMinOffset, singleFloatType, gUnknownUnits, &offset), kyrOk);
  EXPECT_EQ(set(one, dsMinFieldFile, 901), kyrOk);
  EXPECT_EQ(set(one, 120, 77), kyrOk);
  EndInit(record.get());
  CloseFile(record.get(), one);

  const Link in = open("a.kyr");
  EXPECT_EQ(GetInSeismicType(record.get(), in), brickedTimeStack);
  EXPECT_EQ(GetInSeismicType(record.get(), Link{}), 0);
  float seconds = 0;
  int microseconds = 0;
  GetDatasetProperty(record.get(), in, dsSampleInterval, singleFloatType, gUnknownUnits, &seconds);
  GetDatasetProperty(record.get(), in, dsSampleInterval, longIntType, gMicrosecondsUnits, &microseconds);
  EXPECT_EQ(seconds, interval);
  EXPECT_EQ(microseconds, 2000);
  EXPECT_EQ(get(in, dsMinFieldFile), 901);
  EXPECT_TRUE(IsValueNull(get(in, dsMaxFieldFile)));  // never set

  const Link out = announce("b.kyr", {3, 2, 4, 0});
  ASSERT_EQ(CopyBinaryHeader(record.get(), in, out), kyrOk);
  EXPECT_EQ(CopyBinaryHeader(record.get(), out, in), kyrTooLate);
  GetDatasetProperty(record.get(), out, dsSampleInterval, singleFloatType, gUnknownUnits, &seconds);
  EXPECT_EQ(seconds, interval);
  EXPECT_EQ(get(out, 120), 77);
  EXPECT_TRUE(IsValueNull(get(out, dsMinFieldFile)));  // of the other dataset's traces
  EXPECT_EQ(get(out, dsTotalTraces), 6);
  EXPECT_EQ(get(out, dsSamples), 4);
  GeneralSeisDataOrg org{};
  ASSERT_EQ(GetSeisOrg(record.get(), in, &org), kyrOk);
  EXPECT_EQ(loadLeFloat(org.bytes + 44), interval);
  EXPECT_EQ(loadLeFloat(org.bytes + 92), offset);
  EXPECT_EQ(loadLeInt32(org.bytes + 336), 901);
}

TEST(DatasetProperties, ValuesAreConvertedToTheCallersType) {
  TraceInfo header{};
  struct Case {
    double kept;
    int asInt;
    int asShort;
  };
  for (const Case& c : std::vector<Case>{{12.5, 13, 13},
                                         {-12.5, -13, -13},
                                         {0.49, 0, 0},
                                         {40000, 40000, 32767},
                                         {-40000, -40000, -32768},
                                         {3e9, intMax, 32767},
                                         {-3e9, -intMax, -32768},
                                         {kNullFloat, kNullInt, -32768}}) {
    ASSERT_EQ(SetTraceProperty(trSourceLocation, doubleFloatType, gUnknownUnits, &c.kept, &header), kyrOk);
    std::int32_t number = 0;
    std::int16_t half = 0;
    float single = 0;
    EXPECT_EQ(GetTraceProperty(trSourceLocation, longIntType, gUnknownUnits, &number, &header), kyrOk);
    EXPECT_EQ(GetTraceProperty(trSourceLocation, shortIntType, gUnknownUnits, &half, &header), kyrOk);
    EXPECT_EQ(GetTraceProperty(trSourceLocation, singleFloatType, gUnknownUnits, &single, &header), kyrOk);
    EXPECT_EQ(number, c.asInt);
    EXPECT_EQ(half, c.asShort);
    EXPECT_EQ(single, static_cast<float>(c.kept));
    EXPECT_EQ(SetTraceProperty(trChannel, doubleFloatType, gUnknownUnits, &c.kept, &header), kyrOk);
    EXPECT_EQ(static_cast<std::int32_t>(header.words[trChannel]), c.asInt);
  }
  const double large = -1e300;  // a number, not null
  double back = 0;
  SetTraceProperty(trOffset, doubleFloatType, gUnknownUnits, &large, &header);
  GetTraceProperty(trOffset, doubleFloatType, gUnknownUnits, &back, &header);
  EXPECT_FALSE(IsValueNull(back));
  EXPECT_LT(back, -3e38);
  const std::int8_t small = -7;
  SetTraceProperty(trFieldFile, byteType, gUnknownUnits, &small, &header);
  EXPECT_EQ(header.words[8], 0xFFFFFFF9U);
  const std::int32_t null = kNullInt;
  SetTraceProperty(trOffset, longIntType, gUnknownUnits, &null, &header);
  GetTraceProperty(trOffset, doubleFloatType, gUnknownUnits, &back, &header);
  EXPECT_TRUE(IsValueNull(back));
}

TEST(DatasetProperties, UnknownCodesTypesAndUnitsAreRefused) {
  TraceInfo header{};
  GeneralSeisDataOrg org{};
  for (const int code : {-1, 0, 1, 13, 15, 23, 99, 200, intMax}) {
    int value = 5;
    EXPECT_EQ(SetTraceProperty(code, longIntType, gUnknownUnits, &value, &header), kyrBadCall) << code;
    EXPECT_EQ(GetTraceProperty(code, longIntType, gUnknownUnits, &value, &header), kyrBadCall) << code;
    EXPECT_EQ(value, 0);
  }
  for (const int code : {-1, 3, 12, 20, 35, 83, 86, 215, intMax}) {
    int value = 5;
    EXPECT_EQ(SetDSProperty(code, longIntType, gUnknownUnits, &value, &org), kyrBadCall) << code;
    EXPECT_EQ(GetDSProperty(code, longIntType, gUnknownUnits, &value, &org), kyrBadCall) << code;
  }
  int value = 5;
  for (const int type : {0, 1, 7}) EXPECT_EQ(SetTraceProperty(8, type, gUnknownUnits, &value, &header), kyrBadCall);
  EXPECT_EQ(SetTraceProperty(8, longIntType, gSecondsUnits, &value, &header), kyrBadCall);
  EXPECT_EQ(SetTraceProperty(8, longIntType, gUnknownUnits, nullptr, &header), kyrBadCall);
  EXPECT_EQ(SetDSProperty(dsSampleInterval, longIntType, 9, &value, &org), kyrBadCall);
  EXPECT_EQ(header.words, TraceInfo{}.words);
  // The codes that modules may use: integers first, then floats.
  const double number = 2.75;
  for (const int code : {100, 149, 150, 199}) {
    double back = 0;
    EXPECT_EQ(SetTraceProperty(code, doubleFloatType, gUnknownUnits, &number, &header), kyrOk);
    EXPECT_EQ(GetTraceProperty(code, doubleFloatType, gUnknownUnits, &back, &header), kyrOk);
    EXPECT_EQ(back, code < 150 ? 3 : 2.75);
  }
}

TEST(DatasetProperties, AnyKillFlagMakesATraceDead) {
  TraceInfo header{};
  EXPECT_FALSE(IsDead(header));
  for (const int flag : {1, 2, 16, 32, 48, 64, -1, 1 << 30}) {
    SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &flag, &header);
    EXPECT_TRUE(IsDead(header)) << flag;
  }
  SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &kNullInt, &header);
  EXPECT_FALSE(IsDead(header));
}

TEST(DatasetProperties, RecordsOfOneFileStayBelowATebibyte) {
  EXPECT_EQ(GetRecordsPerFile(1000, 240, 3000), 1000);
  const std::int64_t slot = 824 + 4 * 1000;
  const int records = GetRecordsPerFile(intMax, 1000, 1000);
  EXPECT_LE(records * 1000 * slot, std::int64_t{1} << 40);
  EXPECT_GT((records + 1) * 1000 * slot, std::int64_t{1} << 40);
  EXPECT_EQ(GetRecordsPerFile(10, intMax, kMaxSamples), 1);
  for (const auto& [a, b, c] : {std::tuple{0, 5, 5}, {5, 0, 5}, {5, 5, -1}, {-1, -1, -1}, {5, 5, intMax}})
    EXPECT_EQ(GetRecordsPerFile(a, b, c), 1);
}

TEST(ProcessRecords, LinesGoToTheRecordOrToTheDefaultConsole) {
  static std::string own;
  static std::string common;
  const ProcessRecordPtr record(NewProcessRecord());
  SetDefaultConsole([](const char* line) { common += line; });
  ProcessConsole(record.get(), "a");
  record->consoleLine = [](const char* line) { own += line; };
  ProcessConsole(record.get(), "b");
  ProcessConsole(nullptr, "c");
  SetDefaultConsole(nullptr);
  EXPECT_EQ(own, "b");
  EXPECT_EQ(common, "ac");
  FreeProcessRecord(nullptr);
}

}  // namespace
