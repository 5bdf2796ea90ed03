// Reading SEG Y: samples of every format, numbers by their description, what is believed of headers that contradict
// each other, traces as those of a dataset; and recordings of others, where QUARLO_SHARED_DATA names their folder.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "libkyr/segysamples.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/formats/segyformat_text.h"
#include "quarlo/tapelib/formats/segytraces.h"
#include "quarlo/tapelib/formats/segywriter.h"
#include "tests/support/segy_shipped.h"

namespace {

using Lines = std::vector<std::string>;

// ---- samples ----------------------------------------------------------------------------------------------------

TEST(SegySamplesIn, EveryFormatByItsWords) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kLargest = std::numeric_limits<float>::max();
  struct Row {
    int format;
    std::uint64_t word;  // as it reads in a big-endian file
    int weight;
    float value;
  };
  const Row rows[] = {
      {1, 0xC276A000, 9, -118.625F},  // -(7 x 16 + 6 + 10 / 16); floats have no weight
      {1, 0x43064000, 0, 100.0F},     // 100 with a leading zero
      {1, 0x7FFFFFFF, 0, kInfinity},
      {2, 0x80000000, 0, -2147483648.0F},
      {2, 0xFFFFFFFF, -3, -8.0F},
      {2, 0x01000001, 0, 16777216.0F},
      {3, 0x8000, 15, -1.0F},
      {3, 0x0001, 32767, 0.0F},
      {3, 0x0001, -32768, kInfinity},
      {3, 0x0000, -32768, 0.0F},
      {3, 0x0001, 149, 0x1p-149F},
      {5, 0x3F800001, 4, 1.0F + 0x1p-23F},
      {5, 0xFF800000, 0, -kInfinity},
      {6, 0x3FF0000010000001, 0, 1.0F + 0x1p-23F},  // just above the middle
      {6, 0x47EFFFFFEFFFFFFF, 0, kLargest},         // just below the middle between it and 2^128
      {6, 0xC7EFFFFFF0000000, 0, -kInfinity},
      {7, 0x800000, 0, -8388608.0F},
      {7, 0x00FF00, 8, 255.0F},
      {8, 0x80, -1, -256.0F},
      {9, 0x8000000000000000, 0, -0x1p63F},
      {10, 0xFFFFFF7F, 0, 4294967040.0F},
      {11, 0xFFFF, 0, 65535.0F},
      {12, 0x8000008000000001, 0, 0x1p63F + 0x1p40F},  // rounded twice it would be 2^63
      {12, 0x8000008000000001, 100, 0x1p-37F + 0x1p-60F},
      {15, 0xFFFFFF, 0, 16777215.0F},
      {16, 0xFF, 1, 127.5F},
      {4, 0x12345678, 0, 0.0F},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(formatText("format %d, word %llx", row.format, static_cast<unsigned long long>(row.word)));
    const auto bytes = static_cast<std::size_t>(segySampleBytes(row.format));
    for (const bool isBig : {true, false}) {
      std::string trace(1, '\0');  // nothing is aligned
      for (std::size_t i = 0; i < 3 * bytes; ++i)
        trace += static_cast<char>(row.word >> 8 * (isBig ? bytes - 1 - i % bytes : i % bytes));
      float samples[4] = {7, 7, 7, 7};
      const auto odd = segySamplesIn(trace.data() + 1, samples, 3, row.format, isBig, row.weight);
      for (int i = 0; i < 3; ++i) EXPECT_EQ(samples[i], row.value);
      EXPECT_EQ(samples[3], 7);
      EXPECT_EQ(odd.infinite, std::isinf(row.value) ? 3U : 0U);
      EXPECT_EQ(odd.notNumbers, 0U);
    }
  }
  float sample = 0;
  EXPECT_EQ(segySamplesIn("\x7F\xF0\0\0\0\0\0\x01", &sample, 1, 6, true, 0).notNumbers, 1U);
}

// ---- files in memory --------------------------------------------------------------------------------------------

class MemoryFile : public BytesAt {
 public:
  explicit MemoryFile(std::string bytes) : bytes_(std::move(bytes)) {}
  std::uint64_t size() const override { return bytes_.size(); }
  std::span<const char> at(std::uint64_t place, std::size_t count) override {
    return std::span(bytes_)
        .subspan(std::min<std::size_t>(place, bytes_.size()))
        .first(std::min<std::size_t>(count, bytes_.size() - std::min<std::size_t>(place, bytes_.size())));
  }

 private:
  std::string bytes_;
};

/// Traces of 2-byte samples with these counts in their headers, and these many samples.
std::string traces(std::initializer_list<std::pair<int, int>> counts, std::size_t headerBytes = 240,
                   bool isBig = true) {
  std::string all;
  for (const auto& [stated, samples] : counts)
    all += header(headerBytes, {{115, 2, static_cast<std::uint64_t>(stated)}}, isBig) +
           std::string(2 * static_cast<std::size_t>(samples), '\0');
  return all;
}

std::string stanza(const std::string& text) { return text + std::string(3200 - text.size(), '\x40'); }

TEST(SegyLayout, WhatIsBelievedOfHeadersThatContradictTheFile) {
  const SegyFormat format = shipped("segy-rev2.txt");
  constexpr HeaderField kShorts{25, 2, 3};
  constexpr HeaderField kTwo{301, 1, 2};
  constexpr HeaderField kFixed{303, 2, 1};
  const auto samples = [](std::uint64_t count) { return HeaderField{21, 2, count}; };
  const auto file = [](std::initializer_list<HeaderField> fields, const std::string& rest, bool isBig = true) {
    return std::string(3200, '\0') + header(400, fields, isBig) + rest;
  };
  const std::string endStanza = stanza("\x4D\x4D\xE2\xC5\xC7\x7A\x40\xC5\x95\x84\xE3\x85\xA7\xA3\x5D\x5D");
  struct Case {
    const char* what;
    std::string bytes;
    std::string layout;  // first trace, header bytes, traces, samples, rest
    Lines remarks;
  };
  const Case cases[] = {
      {"the traces' own counts, of two lengths",
       file({kShorts, samples(9)}, traces({{3, 3}, {3, 3}, {5, 5}})),
       "3600 240 3 3 0",
       {"Traces have from 3 to 5 samples: all are padded or cut to the 3 of the first"}},
      {"a fixed length",
       file({kShorts, samples(4), kFixed}, traces({{6, 4}, {2, 4}})),
       "3600 240 2 4 0",
       {"The first trace's header gives 6 samples, the traces have 4"}},
      {"a fixed length that is none",
       file({kShorts, samples(9), kFixed}, traces({{4, 4}, {3, 3}})),
       "3600 240 2 4 0",
       {"Traces have from 3 to 4 samples: all are padded or cut to the 4 of the first",
        "The file says that all traces have one length, which its own length contradicts"}},
      {"own counts of 0", file({kShorts, samples(60)}, traces({{0, 60}, {0, 60}})), "3600 240 2 60 0", {}},
      {"only the first trace tells", file({kShorts}, traces({{60, 60}, {0, 60}})), "3600 240 2 60 0", {}},
      {"more than 32,767", file({kShorts, samples(40000)}, traces({{0, 40000}})), "3600 240 1 40000 0", {}},
      {"the smaller rest, of own counts",
       file({kShorts, samples(100)}, traces({{3, 3}, {4, 4}}) + "x"),
       "3600 240 2 3 1",
       {"Traces have from 3 to 4 samples: all are padded or cut to the 3 of the first",
        "1 byte behind the last whole trace is left out"}},
      {"the smaller rest, of the binary header",
       file({kShorts, samples(4)}, traces({{9, 4}, {0, 4}}) + "xyz"),
       "3600 240 2 4 3",
       {"The first trace's header gives 9 samples, the traces have 4",
        "3 bytes behind the last whole trace are left out"}},
      {"no count at all",
       file({kShorts}, traces({{0, 4}})),
       "3600 240 0 0 248",
       {"The file has no whole trace", "248 bytes behind the last whole trace are left out"}},
      {"little-endian by its format code",
       file({kShorts, samples(4)}, traces({{4, 4}}, 240, false), false),
       "3600 240 1 4 0 little",
       {}},
      {"little-endian by its mark", file({{25, 2, 0x0300}, {97, 4, 0x01020304}, samples(4)}, "", false), "", {}},
      {"text headers by their number, in revision 0",
       file({kShorts, samples(4), {305, 2, 2}}, stanza("") + stanza("") + traces({{4, 4}})),
       "10000 240 1 4 0",
       {}},
      {"text headers up to their stanza",
       file({kShorts, samples(4), {305, 2, 0xFFFF}}, stanza("") + endStanza + traces({{4, 4}})),
       "10000 240 1 4 0",
       {}},
      {"text headers that the file cannot hold",
       file({kShorts, samples(4), {305, 2, 9}}, traces({{4, 4}})),
       "3600 240 1 4 0",
       {"9 extended text headers are announced, which the file cannot hold: taken for none"}},
      {"no stanza",
       file({kShorts, samples(4), {305, 2, 0xFFFF}}, traces({{4, 4}})),
       "3600 240 1 4 0",
       {"The number of extended text headers is given as -1 and no stanza ends them: taken for none"}},
      {"additional headers before revision 2",
       file({kShorts, samples(4), {307, 4, 1}, {69, 4, 9}}, traces({{4, 4}})),
       "3600 240 1 4 0",
       {}},
      {"additional headers, 32 bits",
       file({kShorts, kTwo, samples(4), {307, 4, 1}}, traces({{4, 4}}, 480)),
       "3600 480 1 4 0",
       {}},
      {"additional headers, 16 bits",
       file({kShorts, kTwo, samples(4), {307, 2, 2}}, traces({{4, 4}}, 720)),
       "3600 720 1 4 0",
       {}},
      {"16 bits that a 32-bit reading could be",
       file({kShorts, kTwo, samples(4), {309, 2, 1}}, traces({{4, 4}, {4, 4}})),
       "3600 240 2 4 0",
       {}},
      {"32 bits of a file that is cut",
       file({kShorts, kTwo, samples(4), {307, 4, 1}}, traces({{4, 4}, {4, 4}, {4, 4}}, 480).substr(0, 1364)),
       "3600 480 2 4 388",
       {"388 bytes behind the last whole trace are left out"}},
      {"16 bits of revision 2.1, cut",
       file({kShorts, kTwo, {302, 1, 1}, samples(4), {309, 2, 1}},
            traces({{4, 4}, {4, 4}, {4, 4}, {4, 4}}).substr(0, 989)),
       "3600 240 3 4 245",
       {"245 bytes behind the last whole trace are left out"}},
      {"wide counts, a place and trailers of revision 2",
       file({kShorts, kTwo, samples(4), {69, 4, 70000}, {321, 8, 3610}, {329, 4, 1}},
            std::string(10, 'x') + traces({{0, 70000}}) + stanza("")),
       "3610 240 1 70000 0",
       {"The first trace is said to begin behind 3610 bytes, the headers before it have 3600: the first is taken"}},
      {"trailers known by their stanza",
       file({kShorts, kTwo, samples(4), {329, 4, 0xFFFFFFFF}},
            traces({{4, 4}}) + endStanza + "((x: y))" + std::string(3192, ' ')),
       "3600 240 1 4 0",
       {}},
      {"a tape label in front",
       "   1SY1.0RECORD" + std::string(113, ' ') + file({kShorts, samples(4)}, traces({{4, 4}})),
       "3728 240 1 4 0",
       {}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    MemoryFile memory(each.bytes);
    std::string reason;
    const auto layout = segyFileLayout(memory, format, {}, &reason);
    if (each.layout.empty()) {
      EXPECT_EQ(reason, "sample format code 768 is none that can be read");
      continue;
    }
    ASSERT_TRUE(layout) << reason;
    EXPECT_EQ(formatText("%llu %u %llu %u %llu%s", static_cast<unsigned long long>(layout->firstTrace),
                         layout->headerBytes, static_cast<unsigned long long>(layout->traces), layout->samples(),
                         static_cast<unsigned long long>(layout->rest), layout->reading.bigEndian ? "" : " little"),
              each.layout);
    EXPECT_EQ(layout->remarks, each.remarks);
    EXPECT_EQ(layout->text, SegyText::Zeros);
  }
  MemoryFile mixed(cases[0].bytes);
  std::string reason;
  const auto layout = segyFileLayout(mixed, format, {}, &reason);
  EXPECT_EQ(layout->placeOf(1).place, 3846U);
  EXPECT_EQ(layout->placeOf(2).place, 4092U);
  EXPECT_EQ(layout->placeOf(2).samples, 5U);
  MemoryFile cut(cases[0].bytes.substr(0, 3599));
  EXPECT_FALSE(segyFileLayout(cut, format, {}, &reason));
  EXPECT_EQ(reason, "the file has 3599 bytes, its reel headers need 3600");
}

TEST(SegyLayout, IntervalsAndTheBlocksOfATape) {
  const SegyFormat format = shipped("segy-rev2.txt");
  const auto text = std::string(3200, '\0');
  const auto layoutOf = [&](std::initializer_list<HeaderField> fields, int traceInterval) {
    MemoryFile file(text + header(400, fields) +
                    header(240, {{115, 2, 1}, {117, 2, static_cast<std::uint64_t>(traceInterval)}}) + "xx");
    std::string reason;
    return *segyFileLayout(file, format, {}, &reason);
  };
  EXPECT_EQ(layoutOf({{25, 2, 3}, {17, 2, 65000}}, 65000).interval, 65000);
  EXPECT_EQ(layoutOf({{25, 2, 3}}, 40000).interval, 40000);
  const auto differing = layoutOf({{25, 2, 3}, {17, 2, 2000}}, 1000);
  EXPECT_EQ(differing.interval, 2000);
  EXPECT_EQ(differing.remarks,
            Lines{"The binary header gives an interval of 2000 us, the first trace 1000 us: the first is taken"});
  const auto exact = layoutOf({{25, 2, 3}, {301, 1, 2}, {73, 8, 0x405F480000000000}}, 0);
  EXPECT_EQ(exact.interval, 125.125);
  EXPECT_EQ(exact.remarks, Lines{"The sample interval is no whole number of microseconds: 125.125 us"});
  std::string reason;
  const auto tape =
      segyTapeLayout(text, header(400, {{25, 2, 1}, {17, 2, 4000}, {13, 2, 48}, {15, 2, 2}}), format, {}, &reason);
  ASSERT_TRUE(tape);
  EXPECT_EQ(tape->tracesPerRecord, 50U);
  EXPECT_EQ(tape->interval, 4000);
  EXPECT_EQ(placeInBlock(*tape, std::string(240 + 4 * 40000 + 3, '\0')).value().samples, 40000U);
  EXPECT_FALSE(placeInBlock(*tape, std::string(239, '\0')));
}

// ---- traces -----------------------------------------------------------------------------------------------------

TEST(SegyTraces, PropertiesComeByTheDescription) {
  SegyFormat format = shipped("segy-rev2.txt");
  SegyLayout layout;
  layout.sampleFormat = 3;
  layout.sampleBytes = 2;
  const auto trace = header(480, {{1, 4, 11},          {9, 4, 12},       {13, 4, 13},
                                  {17, 4, 14},         {21, 4, 15},      {29, 2, 2},
                                  {37, 4, 0xFFFFFFF0}, {41, 4, 100},     {45, 4, 200},
                                  {69, 2, 7},          {71, 2, 0xFFF6},  {73, 4, 1234},
                                  {77, 4, 18},         {81, 4, 20},      {85, 4, 21},
                                  {109, 2, 0xFFFE},    {169, 2, 0xFFFF}, {189, 4, 5},
                                  {193, 4, 6},         {215, 2, 10},     {337, 8, 0x3FF8000000000000}});
  SegyTraceReader reader(format, layout);
  TraceInfo info;
  reader.readHeader(trace, &info);
  const std::pair<int, double> expected[] = {{9, 11},    {8, 12},   {10, 13},   {5, 14},       {3, 15},
                                             {12, 2},    {16, -16}, {22, 100},  {19, 200},     {17, 123.4F},
                                             {18, 1.8F}, {20, 2},   {21, 2.1F}, {150, -0.02F}, {11, 64}};
  for (const auto& [code, value] : expected) EXPECT_EQ(property(info, code), value) << code;
  for (const int code : {trCmpLine, trSourceLine, trReceiverLine, trReceiverLocation})
    EXPECT_TRUE(IsValueNull(property(info, code))) << code;
  std::vector<float> samples(3, 7.0F);
  reader.readSamples(trace, std::string("\x01\x00\xFF\xFF", 4), samples);
  EXPECT_EQ(samples, (std::vector<float>{512, -2, 0}));
  EXPECT_EQ(reader.oddities().lines(),
            (Lines{"1 trace has a delay, the first one of -20 ms: kept in trace property 150",
                   "2 scalars are no power of ten up to 10000 (field \"ReceiverElevation\" first): values are taken as "
                   "they stand"}));
  layout.reading = {true, true};  // revision 2: the wider fields count
  takeGridLines(&format);
  SegyTraceReader(format, layout).readHeader(trace, &info);
  EXPECT_EQ(property(info, 17), 1.5);
  EXPECT_EQ(property(info, trCmpLine), 5);
  EXPECT_EQ(property(info, trCmpLocation), 6);
}

TEST(SegyTraces, FieldsOfEverySizeAndFixedValuesOfAnInput) {
  SegyFormat format;
  const auto read = [&format](const std::string& field, const std::string& bytes, bool isBig) {
    EXPECT_TRUE(parseSegyFormat("Quarlo SEG Y format, version 2, readable from 2\n" + field, &format).empty());
    return SegyValue(format, false, "A", {isBig, false}).in(bytes);
  };
  const struct {
    const char* type;
    std::uint64_t word;
    int bytes;
    double value;
  } rows[] = {{"int8", 0xFE, 1, -2},
              {"uint8", 0xFE, 1, 254},
              {"int16", 0x8001, 2, -32767},
              {"uint16", 0x8001, 2, 32769},
              {"int32", 0xFFFFFFFE, 4, -2},
              {"uint32", 0xFFFFFFFE, 4, 4294967294},
              {"int64", 0xFFFFFFFFFFFFFFFE, 8, -2},
              {"uint64", 0x8000000000000000, 8, 0x1p63},
              {"float32", 0xBFC00000, 4, -1.5},
              {"float64", 0x3FF8000000000000, 8, 1.5}};
  for (const auto& row : rows)
    for (const bool isBig : {true, false})
      EXPECT_EQ(read(formatText("[trace A]\ntype = %s\nbyte = 2\nscale = 2\n", row.type),
                     header(9, {{2, row.bytes, row.word}}, isBig), isBig),
                row.value / 2)
          << row.type;
  const std::string fixed = "[trace A]\ntype = int16\nbyte = 1\noverride = 9\n";
  EXPECT_EQ(read(fixed, header(2, {{1, 2, 5}}), true), 5);
  EXPECT_EQ(read("input = yes\n" + fixed, header(2, {{1, 2, 5}}), true), 9);
  EXPECT_EQ(read(fixed, "x", true), std::nullopt);
}

TEST(SegyTraces, WhatIsWrittenByADescriptionIsReadByIt) {
  for (const int revision : {0, 1, 2}) {
    SegyFormat format = shipped(formatText("segy-rev%d.txt", revision).c_str());
    SegyLayout layout;
    layout.reading.extended = revision == 2;
    const std::pair<int, float> values[] = {{trSourceX, 1234.56F},
                                            {trReceiverElevation, -0.29F},
                                            {trOffset, -17.0F},
                                            {kTraceDelay, 0.25F},
                                            {trCmpLocation, 65.0F}};
    TraceInfo trace{};
    for (const auto& [code, value] : values) SetTraceProperty(code, singleFloatType, gUnknownUnits, &value, &trace);
    const int samples = revision == 2 ? 70000 : 40000;
    std::string bytes(static_cast<std::size_t>(format.itsTraceBytes), '\0');
    fillMappedFields(&format, bytes.data(), trace);
    fillTraceHeader(&format, bytes.data(), 1, 2, 3, 1, samples, segyInterval(0.04));
    EXPECT_EQ(SegyValue(format, false, "Nt", layout.reading).countIn(bytes), static_cast<std::uint64_t>(samples));
    EXPECT_EQ(SegyValue(format, false, "Dt", layout.reading).positiveIn(bytes), 40000);
    TraceInfo back;
    SegyTraceReader(format, layout).readHeader(bytes, &back);
    for (const auto& [code, value] : values) EXPECT_EQ(property(back, code), value) << revision << ": " << code;
    EXPECT_EQ(property(back, trFieldFile), 2);
    EXPECT_EQ(property(back, trChannel), 3);
  }
}

TEST(SegyTraces, RecordsBeginWhereTheirRuleSays) {
  const SegyFormat format = shipped("segy-rev0.txt");
  const auto made = [&](const SegyRecordRule& rule) {
    SegyRecords records(format, {}, rule);
    for (const int file : {7, 7, 9, 9, 9, 7}) records.add(header(240, {{9, 4, static_cast<std::uint64_t>(file)}}));
    return formatText("%llu of %llu", static_cast<unsigned long long>(records.records()),
                      static_cast<unsigned long long>(records.largest()));
  };
  EXPECT_EQ(made({}), "3 of 3");
  EXPECT_EQ(made({"", 4}), "2 of 4");
  EXPECT_EQ(made({"", 0}), "1 of 6");
}

}  // namespace
