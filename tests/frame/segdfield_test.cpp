// SEG D after the published standard: samples worked out by hand, field files made here, and those of others where
// QUARLO_SHARED_DATA names their folder.
#include <gtest/gtest.h>

#include <bit>
#include <sstream>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "quarlo/tapelib/formats/segdsamples.h"
#include "quarlo/tapelib/formats/segdwalk.h"
#include "quarlo/tapelib/frame/segdsource.h"
#include "tests/kyr/dataset_fixture.h"
#include "tests/segdcopy/segd_fixture.h"
#include "tests/support/format_facts.h"

namespace {

// Hexadecimal digits, with blanks between bytes.
std::string bytesOf(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += hex[i] == ' ' ? 1 : 2)
    if (hex[i] != ' ') bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return bytes;
}

// ---- samples ------------------------------------------------------------------------------------------------------

struct Vector {
  int code;
  const char* hex;
  std::vector<float> values;
};

// Bit patterns and values by the formulas of the standard, reckoned on paper.
const Vector kVectors[] = {
    // exponents 0, 15, 3 and 1; 0.5, the largest, the inverse of 0.5, negative zero; then 2^-15 x 2^4
    {8015,
     "0F3140007FFFBFFFFFFF"
     "40000001000000000000",
     {0.5F, 32767.0F, -4.0F, 0.0F, 0x1p-11F, 0, 0, 0}},
    {8022, "78870F91FF", {8192.0F, -0.5F, 0.9375F, -3.5F, 0.0F}},
    {8024, "780087FF00019FFEFFFF", {8192.0F, -0.5F, 0x1p-12F, -0x1p-10F, 0.0F}},
    {8036, "000001FFFFFF7FFFFF800000010000", {1, -1, 8388607, -8388608, 65536}},
    {8038, "00000001FFFFFFFF7FFFFFFF80000000", {1, -1, 0x1p31F, -0x1p31F}},
    {8042, "1070A8801F", {0.5F, 2048.0F, -4.0F, 0.0F, 0.96875F}},
    {8044, "10007000A80080000001", {0.5F, 2048.0F, -4.0F, 0.0F, 0x1p-13F}},
    {8048, "41100000C276A000408000004600000100000000", {1.0F, -118.625F, 0.5F, 1.0F, 0.0F}},
    {8058, "3F800000C2ED400000000000", {1.0F, -118.625F, 0.0F}},
};

TEST(SegdSamples, ValuesOfEveryFormatAreThoseOfTheStandard) {
  for (const Vector& row : kVectors) {
    const std::string bytes = bytesOf(row.hex);
    EXPECT_EQ(segdTraceBytes(row.code, row.values.size()), bytes.size()) << row.code;
    std::vector<float> raw(row.values.size() + 4, 77.0F);
    ASSERT_EQ(decodeSegdTrace(row.code, bytes, kSegdRaw, raw), row.values.size()) << row.code;
    raw.resize(row.values.size());
    EXPECT_EQ(raw, row.values) << row.code;
    std::vector<float> volts(row.values.size());
    decodeSegdTrace(row.code, bytes, segdVolts(0.25), volts);
    for (std::size_t i = 0; i < volts.size(); ++i) EXPECT_EQ(volts[i], static_cast<float>(row.values[i] / 4e3));
  }
  std::vector<float> one(1);
  decodeSegdTrace(8058, bytesOf("7F7FFFFF"), segdVolts(1024), one);
  EXPECT_EQ(one[0], HUGE_VALF);
  decodeSegdTrace(8058, bytesOf("7FC00000"), segdVolts(1024), one);
  EXPECT_TRUE(std::isnan(one[0]));
  EXPECT_EQ(decodeSegdTrace(8080, bytesOf("7FC00000"), kSegdRaw, one), 0U);
}

// ---- field files --------------------------------------------------------------------------------------------------

struct Walked {
  std::vector<SegdFieldFile> files;
  std::uint64_t rest = 0;
};

// Every answer lies in memory of its own size: one byte too far is seen by the sanitizers.
class MemoryBytes : public BytesAt {
 public:
  explicit MemoryBytes(const std::string& bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::span<const char> at(std::uint64_t place, std::size_t count) override {
    const std::string answer = bytes_.substr(place, count);
    answer_ = std::vector<char>(answer.begin(), answer.end());
    return answer_;
  }

 private:
  const std::string& bytes_;
  std::vector<char> answer_;
};

Walked walk(const std::string& bytes) {
  MemoryBytes memory(bytes);
  SegdWalk walk(memory);
  Walked found;
  while (auto file = walk.next()) found.files.push_back(std::move(*file));
  found.rest = walk.rest();
  return found;
}

// Two sets, the second shorter; with traces that take `extra` samples more than the times say.
std::string fieldFile(int number, int extra = 0) {
  const FieldFile file{.number = number, .sets = {{3, 20}, {2, 10}}};
  std::string all = file.header();
  for (int set = 1; set <= 2; ++set)
    for (int place = 1; place <= 4 - set; ++place) all += file.trace(set, place, (set == 1 ? 10 : 5) + extra);
  return all;
}

std::string damageOf(const SegdFieldFile& file) {
  std::string all;
  for (const SegdDamage& damage : file.damage) all += std::to_string(damage.byte) + ": " + damage.what + "\n";
  return all;
}

TEST(SegdWalk, FindsEveryTraceAndGoesOnBehindDamage) {
  const std::string file = fieldFile(7);
  const std::string next = fieldFile(8);
  ASSERT_EQ(file.size(), 388U);
  const auto with = [&](std::size_t place, const char* byte) { return (file + next).replace(place, 1, byte); };
  const std::string flipped = with(128 + 60 + 2, "\x0A");
  const struct {
    std::string bytes;
    std::vector<std::size_t> traces;
    std::string damage;
    std::uint64_t rest;
  } table[] = {
      {file + next, {5, 5}, "", 0},
      {fieldFile(7, 1) + fieldFile(8, 1), {5, 5}, "", 0},
      {file + "rest", {5}, "", 4},
      {file.substr(0, file.size() - 40) + next, {4, 5}, "348: trace 5 of 5: it is missing\n", 0},
      {flipped, {5, 5}, "190: trace 2 of 5: the scan type of its header is no number (0A)\n", 0},
      {with(128 + 2, "\x09"), {0}, "130: trace 1 of 5: channel set 1 of scan type 9 is not described\n", 648},
      {with(64 + 9, "\x0A"), {0}, "72: the number of channels is no number (000A)\n", 776},
      {with(388 + 27, "\xFA"), {5, 0}, "415: the number of scan types is no number (FA)\n", 388},
      {"not SEG D, but long enough for a header", {0}, "2: 7420 is no format code of SEG D\n", 39},
  };
  for (const auto& row : table) {
    const Walked found = walk(row.bytes);
    ASSERT_EQ(found.files.size(), row.traces.size()) << row.damage;
    std::string damage;
    for (std::size_t i = 0; i < row.traces.size(); ++i) {
      EXPECT_EQ(found.files[i].traces.size(), row.traces[i]) << row.damage;
      damage += damageOf(found.files[i]);
    }
    EXPECT_EQ(damage, row.damage);
    EXPECT_EQ(found.rest, row.rest) << row.damage;
  }
  EXPECT_EQ(walk(flipped).files[0].traces[1].set, kNoSegdSet);
  EXPECT_EQ(walk(fieldFile(7, 1)).files[0].traces[4].samples, 6U);
}

TEST(SegdWalk, EveryCutIsTold) {
  const std::string file = fieldFile(7);
  for (std::size_t bytes = 1; bytes < file.size(); ++bytes) {
    const Walked found = walk(file.substr(0, bytes));
    ASSERT_EQ(found.files.size(), 1U);
    EXPECT_FALSE(found.files[0].damage.empty()) << bytes;
    EXPECT_LE(found.files[0].end, bytes);
  }
}

// ---- multiplexed --------------------------------------------------------------------------------------------------

int muxValue(int scan, int subscan, int set, int channel) { return scan * 1000 + subscan * 100 + set * 10 + channel; }

TEST(SegdScans, ChannelsOfMultiplexedRecordsAreTakenApart) {
  for (const int code : {15, 58}) {
    FieldFile file{.code = code, .sets = {{8, 20}, {4, 20}}};
    std::string all = file.header();
    all[64 + 11] = 0x10;  // two subscans in the first set
    for (int scan = 0; scan < 10; ++scan) {
      all += bytesOf("FFFFFFFF00000000");
      for (const auto& [set, subscan, channels] : {std::array{0, 0, 8}, std::array{0, 1, 8}, std::array{1, 0, 4}})
        for (int channel = 0; channel < channels; ++channel) {
          if (code == 15 && channel % 4 == 0) all += std::string(2, '\0');
          const int value = muxValue(scan, subscan, set, channel);
          char sample[4];
          storeBe32(sample, code == 15 ? static_cast<std::uint32_t>(value) << 16
                                       : std::bit_cast<std::uint32_t>(static_cast<float>(value)));
          all.append(sample, code == 15 ? 2 : 4);
        }
    }
    const SegdFieldFile found = walk(all + fieldFile(3)).files.at(0);
    EXPECT_EQ(damageOf(found), "");
    ASSERT_EQ(found.traces.size(), 12U);
    for (std::size_t i = 0; i < 12; ++i) {
      const std::size_t set = i / 8;
      std::vector<float> samples(found.traces[i].samples);
      ASSERT_EQ(samples.size(), set == 0 ? 20U : 10U);
      EXPECT_EQ(decodeSegdScans(code, std::string_view(all).substr(found.traces[i].byte),
                                found.scans.placeOf(set, i % 8), code == 15 ? 32768.0 : 1.0, samples),
                samples.size());
      for (std::size_t k = 0; k < samples.size(); ++k) {
        const int scan = static_cast<int>(set == 0 ? k / 2 : k);
        EXPECT_EQ(samples[k], static_cast<float>(muxValue(scan, set == 0 ? static_cast<int>(k % 2) : 0,
                                                          static_cast<int>(set), static_cast<int>(i % 8))));
      }
    }
    const SegdFieldFile cut = walk(all.substr(0, all.size() - 9)).files.at(0);
    EXPECT_NE(damageOf(cut).find("scan 10 of 10: it is missing"), std::string::npos);
    EXPECT_EQ(cut.traces.at(0).samples, 18U);
    all[21] = 0x77;  // bytes per scan
    EXPECT_NE(damageOf(walk(all).files.at(0)).find("19: a scan of 77 bytes is announced, its"), std::string::npos);
  }
}

// ---- headers ------------------------------------------------------------------------------------------------------

TEST(SegdRecord, LargeCountsFactorsSourcesAndReceiversStandWhereTheyDoNotFit) {
  FieldFile file{.number = 1, .sets = {{1, 20}}, .extensions = 1, .samples = 12};
  std::string bytes = file.header();
  bytes.insert(64, bytesOf("000009 0000648000 FFFFFF0000") + std::string(19, '\0'));
  bytes.replace(0, 2, "\xFF\xFF");
  bytes[11] = 0x20;
  bytes[28] = bytes[30] = bytes[31] = '\xFF';
  bytes.replace(32, 14, bytesOf("0186A0 0001 0002 0001 00 0201 0001"));
  bytes.replace(96 + 6, 2, bytesOf("0084"));  // - 2^0
  std::string trace = file.trace(1, 7, 12);
  trace.replace(20, 20, bytesOf("FFFFFF 000005 02 00000C 0000078000 FFFFFFFFFF"));
  trace[11] = 2;
  const std::string all = bytes + std::string(96, 'x') + trace + std::string(32, 't');
  SegdFieldFile found = walk(all).files.at(0);
  EXPECT_EQ(damageOf(found), "");
  EXPECT_EQ(std::tuple(found.end, found.record.fieldFile, found.record.sourceLine, found.record.sourcePoint,
                       found.record.sets.at(0).toMillivolts),
            std::tuple(all.size(), 100000, 100.5, std::nullopt, 0.5));
  const SegdTrace header = std::get<SegdTrace>(readSegdTrace(trace, 2));
  EXPECT_EQ(header.receiverLine, 7.5);
  EXPECT_EQ(header.receiverPoint, 5.0);
  EXPECT_EQ(header.channel, 7);
  EXPECT_TRUE(header.isKilled());
  // Revision 0 counts in quarters and has no trailer; the second general header is missing.
  bytes[42] = bytes[43] = 0;
  EXPECT_EQ(walk(bytes + std::string(96, 'x') + trace).files.at(0).record.sets.at(0).toMillivolts, 0.5);
  bytes[11] = 0;
  EXPECT_EQ(damageOf(walk(bytes).files.at(0)),
            "28: the number of channel sets stands in general header 2, which is missing\n");
}

TEST(SegdRecord, RevisionThreeIsReadAsItsHeadersSay) {
  std::string bytes = FieldFile{.sets = {}}.header();
  bytes[28] = 1;
  bytes.replace(32 + 10, 10, bytesOf("0300 00000000 000F4240"));
  std::string set = bytesOf("01 0102 10 00000000 00002710 00000000 3F000000 000001 0003E8 000103000030");
  set += std::string(64, '\0');
  std::string trace = bytesOf("0001 01FF FFFF 000000 01 00000000000102000001");
  trace += bytesOf("000003 000004 01 FFFFFF") + std::string(11, '\0') + bytesOf("01E240 00000003 00000040");
  const SegdFieldFile found = walk(bytes + set + trace + std::string(12, '\0')).files.at(0);
  EXPECT_EQ(damageOf(found), "");
  EXPECT_EQ(std::tuple(found.record.length, found.record.sets.at(0).number, found.record.sets.at(0).toMillivolts,
                       found.record.sets.at(0).samples()),
            std::tuple(1000.0, 258, 0.5, 10U));
  ASSERT_EQ(found.traces.size(), 1U);
  EXPECT_EQ(found.traces[0].samples, 3U);
  EXPECT_EQ(std::get<SegdTrace>(readSegdTrace(trace, 3)).channel, 123456);
}

// ---- as a source --------------------------------------------------------------------------------------------------

// Zeros but for these.
KyrSegdInput with(std::initializer_list<std::pair<int KyrSegdInput::*, int>> fields) {
  KyrSegdInput how{};
  for (const auto& [field, value] : fields) how.*field = value;
  how.setList[0] = 9;
  how.fieldFiles.leftOut[0] = 7;
  return how;
}

class SegdSourceTest : public DatasetTest {
 protected:
  static int property(const TraceInfo& header, int property) {
    int value = 0;
    EXPECT_EQ(GetTraceProperty(property, longIntType, gUnknownUnits, &value, &header), kyrOk);
    return value;
  }
};

TEST_F(SegdSourceTest, FilesOfAFolderBecomeRecords) {
  // The second set is auxiliary and shorter; a trace of the first is dead, one has a damaged header, one is cut away.
  std::string first = fieldFile(7);
  first[96 + 10] = 0x20;
  first[128 + 60 + 11] = 1;
  std::string second = fieldFile(8);
  second[128 + 60 + 2] = '\x0A';
  writeFile(folder.path("b.segd"), second.substr(0, 128 + 3 * 60 + 10));
  writeFile(folder.path("a.segd"), first + "rest");
  SegdSource source(record.get(), with({{&KyrSegdInput::wholeFolder, 1}, {&KyrSegdInput::raw, 1}}));
  writeFile(folder.path("c.txt"), "no SEG D");
  ASSERT_EQ(source.open(folder.path("b.segd")), 0);
  EXPECT_EQ(source.close(), kyrTraceLost);
  EXPECT_TRUE(said("c.txt is no SEG D file."));
  EXPECT_TRUE(said("SEG D revision 0.0, format 8058: 2 field files, at most 3 traces of 10 samples, 2 ms."));
  EXPECT_TRUE(said("byte 190, field file 8: trace 2 of 5: the scan type of its header is no number (0A)."));
  EXPECT_TRUE(said("byte 318, field file 8: trace 4 of 5: its header ends after 10 of 20 bytes."));
  EXPECT_TRUE(said("The last 4 bytes of "));
  const SeisCounts counts = seisOrgCounts(source.org());
  EXPECT_EQ((std::array{counts.records, counts.tracesPerRecord, counts.samples}), (std::array{2, 3, 10}));
  EXPECT_EQ(source.format().interval, 0.002);
  EXPECT_EQ(source.position(2, 3), 248);
  TraceInfo header;
  std::vector<float> samples(10);
  EXPECT_EQ(source.read(2, 2, samples.data(), &header), kyrTraceLost);
  EXPECT_TRUE(said("byte 188, field file 8: a trace is damaged. It is dead."));
  ASSERT_EQ(source.read(1, 2, samples.data(), &header), kyrOk);
  EXPECT_EQ(property(header, trKillFlag), int{killOther});
  EXPECT_EQ((std::array{property(header, trFieldFile), property(header, trChannel), property(header, trTraceNumber),
                        property(header, trSegdChannelSet), property(header, trSegdYear)}),
            (std::array{7, 2, 2, 1, 2021}));
  EXPECT_EQ(property(header, trReceiverLine), kNullInt);
  std::vector<float> recorded(10);
  decodeSegdTrace(8058, std::string_view(first).substr(128 + 60 + 20), kSegdRaw, recorded);
  EXPECT_EQ(crc32(samples), crc32(recorded));

  SegdSource padded(record.get(), with({{&KyrSegdInput::auxiliary, 1}, {&KyrSegdInput::pad, 1}}));
  ASSERT_EQ(padded.open(folder.path("a.segd")), 0);
  ASSERT_EQ(padded.read(1, 5, samples.data(), &header), kyrOk);
  EXPECT_EQ(property(header, trTraceType), 4);
  EXPECT_EQ(samples[9], 0.0F);
  SegdSource unpadded(record.get(), with({{&KyrSegdInput::auxiliary, 1}}));
  ASSERT_EQ(unpadded.open(folder.path("a.segd")), 0);
  EXPECT_TRUE(said("2 traces of channel set 2: 5 samples, 2 ms: left out, the others have 10 samples, 2 ms."));
  EXPECT_EQ(seisOrgCounts(unpadded.org()).tracesPerRecord, 3);
  KyrSegdInput limited = with({});
  limited.fieldFiles = {1, 7, 9, 0, {}};
  KyrSegdInput listed = with({});
  listed.fieldFiles.leftOutCount = 1;
  for (const KyrSegdInput& how : {with({{&KyrSegdInput::sets, 1}}), listed, limited})
    EXPECT_EQ(SegdSource(record.get(), how).open(folder.path("a.segd")), 1);
}

// ---- recorded by others -------------------------------------------------------------------------------------------

// The list of all traces' sums, as far as its bracket.
std::string crcsOf(SegdSource& source) {
  const SeisCounts counts = seisOrgCounts(source.org());
  std::vector<float> samples(static_cast<std::size_t>(counts.samples));
  TraceInfo header;
  std::string all;
  for (int trace = 1; trace <= counts.tracesPerRecord; ++trace) {
    EXPECT_EQ(source.read(1, trace, samples.data(), &header), kyrOk);
    EXPECT_FALSE(IsDead(header));
    all += formatText("%s\"%08x\"", trace == 1 ? "[" : ", ", crc32(samples));
  }
  return all;
}

TEST(SegdRealFiles, EverySampleIsThatOfTheIndependentReader) {
  const char* shared = std::getenv("QUARLO_SHARED_DATA");
  if (shared == nullptr) GTEST_SKIP() << "QUARLO_SHARED_DATA names no folder with recordings";
  std::istringstream facts(readFile(std::string(shared) + "/format_facts.jsonl"));
  int files = 0;
  for (std::string line; std::getline(facts, line);) {
    if (fact(line, "kind") != "\"SEG D\"") continue;
    const std::string name = fact(line, "file");
    SCOPED_TRACE(name);
    SegdSource volts(nullptr, {});
    SegdSource raw(nullptr, with({{&KyrSegdInput::raw, 1}}));
    ASSERT_EQ(volts.open(std::string(shared) + "/" + name.substr(1, name.size() - 2)), 0);
    ASSERT_EQ(raw.open(std::string(shared) + "/" + name.substr(1, name.size() - 2)), 0);
    EXPECT_EQ(volts.close(), kyrOk);
    const SegdRecord& headers = volts.headersOf(1);
    EXPECT_EQ(formatText("%d", headers.fieldFile.value_or(-1)), fact(line, "field_file"));
    const SegdTime time = headers.time.value_or(SegdTime{});
    EXPECT_EQ(
        formatText("\"%02d-%03d %02d:%02d:%02d\"", time.year % 100, time.day, time.hour, time.minute, time.second),
        fact(line, "time"));
    EXPECT_EQ(headers.sourceLine ? formatText("%.1f", *headers.sourceLine) : "null", fact(line, "source_line"));
    const SeisCounts counts = seisOrgCounts(volts.org());
    EXPECT_EQ(formatText("%d %d", counts.tracesPerRecord, counts.samples),
              fact(line, "traces") + " " + fact(line, "samples"));
    EXPECT_EQ(formatText("%.1f", volts.format().interval * 1e6), fact(line, "interval_us"));
    EXPECT_EQ(crcsOf(volts), fact(line, "trace_crc32"));
    EXPECT_EQ(crcsOf(raw), fact(line, "raw_trace_crc32"));
    ++files;
  }
  EXPECT_GE(files, 11);
}

}  // namespace
