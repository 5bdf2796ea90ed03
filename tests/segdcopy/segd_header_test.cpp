// SEG D headers as tables of bytes and what they mean.

#include <gtest/gtest.h>

#include <map>

#include "quarlo/segdcopy/segdcopy_params.h"
#include "quarlo/segdcopy/segdlist.h"
#include "quarlo/tapelib/formats/segdhdr.h"
#include "tests/segdcopy/segd_fixture.h"

namespace {

/// Bytes at 1-based positions of a block whose other bytes are zero.
using Places = std::map<int, int>;

std::string blockOf(const Places& places, std::size_t bytes = 32) {
  std::string all(bytes, '\0');
  for (const auto& [position, value] : places)
    all.at(static_cast<std::size_t>(position) - 1) = static_cast<char>(value);
  return all;
}

SegdHeaders read(const Places& first, const Places* second = nullptr, float unit = kSegdRecordLengthUnit) {
  SegdHeaders headers;
  headers.RecordLengthMultiplier = unit;
  headers.getGenHeader(blockOf(first).data());
  if (second != nullptr) headers.getOptGenHeaders(blockOf(*second).data());
  return headers;
}

TEST(SegdHeader, GeneralHeaderFieldsStandWhereTheStandardCounts) {
  const segdheader h =
      read({{1, 0x12},  {2, 0x34},  {3, 0x80},  {4, 0x36},  {11, 0x98}, {12, 0x23}, {13, 0x65}, {14, 0x23},
            {15, 0x59}, {16, 0x58}, {17, 0x61}, {20, 0x01}, {21, 0x23}, {22, 0x45}, {23, 0x1C}, {24, 0xF3},
            {25, 0x05}, {26, 0x60}, {27, 0x40}, {28, 0x02}, {29, 0x16}, {30, 0x03}, {31, 0x32}, {32, 0x99}})
          .GenHdr;
  EXPECT_EQ(std::tuple(h.ffilenum, h.fmtCode, h.muxed, h.year, h.genHeaders, h.julianDay, h.hour, h.minute, h.second),
            std::tuple(1234, 8036, 0, 98, 3, 365, 23, 59, 58));
  EXPECT_EQ(std::tuple(h.manufact, h.bytesPerScan, h.sampInt, h.scansPerBlock, h.recType, h.scanTypes, h.channelSets),
            std::tuple(61, 12345, 1.75F, 5 << 3, 6, 2, 16));
  EXPECT_EQ(std::tuple(h.skewFields, h.extendFields, h.externalFields, h.revision), std::tuple(3, 32, 99, 0.0F));
  EXPECT_EQ(h.recLen, 4096);  // 40 units of 102.4 ms
}

TEST(SegdHeader, EveryFieldOfOnesIsCompletedByBlockTwo) {
  const Places ones = {{1, 0xFF}, {2, 0xFF}, {26, 0x8F}, {27, 0xFF}, {31, 0xFF}, {32, 0xFF}};
  const segdheader alone = read(ones).GenHdr;
  const auto fields = [](const segdheader& h) {
    return std::tuple(h.ffilenum, h.recLen, h.extendFields, h.externalFields);
  };
  EXPECT_EQ(fields(alone), std::tuple(65535, 4095, 255, 255));
  const Places second = {{1, 0x01}, {2, 0x02}, {3, 0x03}, {6, 0x01},  {7, 0x04},  {8, 0x02},
                         {9, 0x05}, {12, 2},   {13, 25},  {15, 0x80}, {16, 0x75}, {17, 0x30}};
  const segdheader both = read(ones, &second).GenHdr;
  EXPECT_EQ(fields(both), std::tuple(0x010203, 0x807530, 0x0104, 0x0205));
  EXPECT_FLOAT_EQ(both.revision, 2.25F);
  // What block 1 says itself stays: one byte of ones is not two, a length that happens to be 4095 is not all ones.
  const Places own = {{1, 0xFF}, {2, 0x01}, {26, 0x80}, {27, 0x01}, {31, 0x02}, {32, 0x03}};
  EXPECT_EQ(fields(read(own, &second, 4095.0F).GenHdr), std::tuple(15 * 1000 + 15 * 100 + 1, 4095, 2, 3));
}

/// The standard has the revision one byte earlier: a 1.0 there reads as nothing here.
TEST(SegdHeader, TheRevisionIsReadFromBytesTwelveAndThirteen) {
  const Places standard = {{11, 1}, {12, 0}};
  EXPECT_EQ(read({}, &standard).GenHdr.revision, 0);
  const Places negative = {{12, 0xFF}, {13, 0xCE}};
  EXPECT_FLOAT_EQ(read({}, &negative).GenHdr.revision, -1.5F);
}

TEST(SegdHeader, FormatCodesGiveSampleSizesAndUnknownOnesKeepTheLast) {
  const struct {
    int high, low, format;
    float bytes;
  } known[] = {{0x80, 0x15, 1, 2.5F}, {0x80, 0x22, 2, 1}, {0x80, 0x24, 3, 2}, {0x80, 0x36, 10, 3}, {0x00, 0x36, 10, 3},
               {0x80, 0x38, 9, 4},    {0x00, 0x42, 4, 1}, {0x80, 0x44, 5, 2}, {0x80, 0x48, 6, 4},  {0x80, 0x58, 7, 4}};
  SegdHeaders headers;
  headers.getGenHeader(blockOf({{3, 0x80}, {4, 0x80}}).data());
  EXPECT_EQ(headers.GenHdr.bPS, 0);  // none came before
  for (const auto& row : known) {
    headers.getGenHeader(blockOf({{3, row.high}, {4, row.low}}).data());
    EXPECT_EQ(headers.GenHdr.format, row.format);
    EXPECT_EQ(headers.GenHdr.bPS, row.bytes);
    EXPECT_EQ(headers.GenHdr.muxed, row.high == 0 ? 1 : 0);
  }
  headers.getGenHeader(blockOf({{3, 0x80}, {4, 0x24}}).data());
  headers.getGenHeader(blockOf({{3, 0x90}, {4, 0x81}}).data());
  EXPECT_EQ(headers.GenHdr.fmtCode, 9081);
  EXPECT_EQ(headers.GenHdr.format, 3);
  EXPECT_EQ(headers.GenHdr.bPS, 2);
}

TEST(SegdHeader, RecordLengthsAreDigitsTimesTheUnit) {
  const struct {
    int high, low;
    float unit;
    int milliseconds;
  } rows[] = {{0x00, 0x10, 102.4F, 1024}, {0x00, 0x60, 102.4F, 6144}, {0x09, 0x99, 102.4F, 102297},
              {0x00, 0x61, 100, 6100},    {0x00, 0x01, 102.4F, 102},  {0x00, 0x00, 102.4F, 0},
              {0x00, 0x10, 0.9999F, 10}};
  for (const auto& row : rows)
    EXPECT_EQ(read({{26, row.high}, {27, row.low}}, nullptr, row.unit).GenHdr.recLen, row.milliseconds);
}

TEST(SegdHeader, SamplesOfARecordAreWholeAndAnIntervalOfZeroHasNone) {
  const Places longRecord = {{15, 0}, {16, 0x0F}, {17, 0xA1}};  // 4001 ms
  SegdHeaders headers = read({{3, 0x80}, {4, 0x15}, {23, 0x20}, {26, 0x0F}, {27, 0xFF}}, &longRecord);
  headers.getGenHdrSamples();
  headers.getRecordSize();
  EXPECT_EQ(headers.GenHdrSamples, 2000);  // 4001.05 / 2
  EXPECT_EQ(headers.TraceSize, 5001);      // 4001 / 2 x 2.5
  headers.GenHdr.sampInt = 0;
  headers.getGenHdrSamples();
  headers.getRecordSize();
  EXPECT_EQ(headers.GenHdrSamples, 0);
  EXPECT_EQ(headers.TraceSize, 0);
}

segdscan scanOf(const Places& places, float revision = 0, int recLen = 6000) {
  SegdHeaders headers;
  headers.GenHdr.scanTypes = headers.GenHdr.channelSets = 1;
  headers.GenHdr.revision = revision;
  headers.GenHdr.recLen = recLen;
  headers.getScanHeaders(blockOf(places));
  return headers.ScanHdr.at(0);
}

TEST(SegdHeader, ChannelSetFields) {
  const Places places = {{1, 0x02}, {2, 0x31},  {3, 0x01},  {4, 0x00},  {5, 0x0B},  {6, 0xB8},
                         {9, 0x12}, {10, 0x34}, {11, 0x97}, {12, 0x38}, {27, 0x12}, {28, 0x34}};
  const segdscan scan = scanOf(places);
  EXPECT_EQ(std::tuple(scan.scanType, scan.chanSetNum, scan.startTime, scan.endTime, scan.numChan, scan.chanType,
                       scan.subscans, scan.gainType),
            std::tuple(2, 31, 512, 6000, 1234, 9, 8, 8));
  EXPECT_EQ(scanOf({{2, 0xFF}, {27, 0x12}, {28, 0x34}}).chanSetNum, 0x1234);
  EXPECT_EQ(scanOf({{3, 0xFF}, {4, 0xFF}}).endTime, 6000);  // no end: that of the record
  EXPECT_EQ(scanOf({{15, 0xCF}, {16, 0xFA}}).numChan, 0);   // filters that are no digits say nothing
}

TEST(SegdHeader, TheScaleFactorHasTwoForms) {
  EXPECT_FLOAT_EQ(scanOf({{7, 0x55}, {8, 0x06}}).descaleMult, std::exp2(1.5F));
  EXPECT_FLOAT_EQ(scanOf({{8, 0x86}}, -1).descaleMult, std::exp2(-1.5F));
  EXPECT_FLOAT_EQ(scanOf({{7, 0x00}, {8, 0x06}}, 1).descaleMult, std::exp2(1.5F));
  EXPECT_FLOAT_EQ(scanOf({{7, 0x6D}, {8, 0xB7}}, 1).descaleMult, std::exp2(-14189.0F / 1024));
}

/// With skew blocks the later descriptors come from among them.
TEST(SegdHeader, SkewBlocksAreReadAndNotSteppedOver) {
  SegdHeaders headers;
  headers.GenHdr.scanTypes = 2;
  headers.GenHdr.channelSets = 1;
  headers.GenHdr.skewFields = 1;
  ASSERT_EQ(headers.scanHeaderBytes(), 4 * 32);
  const std::string blocks = blockOf({{1, 1}, {10, 3}}) + blockOf({{1, 0x77}, {10, 4}}) + blockOf({{1, 2}, {10, 5}}) +
                             blockOf({{1, 0x78}, {10, 6}});
  headers.getScanHeaders(blocks);
  ASSERT_EQ(headers.ScanHdr.size(), 2U);
  EXPECT_EQ(headers.ScanHdr[1].scanType, 77);
  EXPECT_EQ(headers.NumberOfChannels(), 7);
}

TEST(SegdHeader, TraceLengthsComeFromTheFirstDescriptorThatFits) {
  SegdHeaders headers;
  headers.GenHdr.bPS = 2.5F;
  headers.GenHdr.sampInt = 2;
  headers.ScanHdr = {{1, 1, 100, 1001, 1, 0, 1, 0, 1},
                     {1, 2, 0, 1000, 1, 0, 4, 0, 1},
                     {1, 2, 0, 2000, 1, 0, 1, 0, 1},
                     {1, 3, 500, 100, 1, 0, 1, 0, 1}};
  const struct {
    int scanType, channelSet;
    double bytes;
  } rows[] = {{1, 1, 1126}, {1, 2, 5000}, {2, 2, 77}, {0, 1, 77}, {1, 0, 77}, {1, 3, -500}, {1, 4, 77}};
  for (const auto& row : rows) {
    headers.TraceSize = 77;
    headers.getTraceSize(blockOf({{3, row.scanType}, {4, row.channelSet}}, 20).data());
    EXPECT_EQ(headers.TraceSize, row.bytes) << row.scanType << " " << row.channelSet;
  }
}

TEST(SegdHeader, ExtensionsCountSamplesOnlyUpward) {
  SegdHeaders headers;
  headers.GenHdr.bPS = 3;
  headers.GenHdrSamples = 1000;
  headers.TraceSize = 77;
  headers.getExtensionSize(blockOf({{9, 3}, {10, 0xE8}}).data());
  EXPECT_EQ(headers.TraceSize, 77);
  headers.getExtensionSize(blockOf({{9, 3}, {10, 0xE9}}).data());
  EXPECT_EQ(headers.TraceSize, 3003);
  headers.getExtensionSize(blockOf({{8, 0xFF}, {9, 0xFF}, {10, 0xFF}}).data());
  EXPECT_EQ(headers.TraceSize, 3.0 * 0xFFFFFF);
}

TEST(SegdHeader, TraceHeaderFields) {
  EXPECT_EQ(getChannelSet(blockOf({{3, 1}, {4, 0x31}, {16, 2}, {17, 3}}, 20).data()), 31);
  EXPECT_EQ(getChannelSet(blockOf({{3, 0xFF}, {4, 0x31}, {16, 2}, {17, 3}}, 20).data()), 0x203);
  EXPECT_EQ(getChannelSet(blockOf({{3, 1}, {4, 0xFF}, {16, 2}, {17, 3}}, 20).data()), 165);
  const std::string head = blockOf({{5, 0xF0}, {6, 0x02}, {7, 0x03}}, 20);
  EXPECT_EQ(getHeaderField(head.data(), 5, SEGD_KEY_INT8), -16);
  EXPECT_EQ(getHeaderField(head.data(), 5, SEGD_KEY_INT16), 0xF002);
  EXPECT_EQ(getHeaderField(head.data(), 5, SEGD_KEY_INT24), 0xF00203);
  EXPECT_EQ(getHeaderField(head.data(), 5, 3), 0);
  EXPECT_TRUE(keyIsInTraceHeader(20, SEGD_KEY_INT8));
  EXPECT_TRUE(keyIsInTraceHeader(18, SEGD_KEY_INT24));
  for (const auto& [byte, type] :
       std::vector<std::pair<int, int>>{{0, 0}, {21, 0}, {20, 1}, {19, 2}, {-5, 1}, {1, -1}, {1, 3}, {2147483647, 2}})
    EXPECT_FALSE(keyIsInTraceHeader(byte, type)) << byte << " " << type;
}

TEST(SegdHeader, WhatCannotBeTrueIsTold) {
  EXPECT_EQ(badGeneralHeaderByte(blockOf({{28, 0x99}, {31, 0xFF}, {32, 0xFF}}).data()), 0);
  EXPECT_EQ(badGeneralHeaderByte(blockOf({{28, 0x0A}}).data()), 28);
  EXPECT_EQ(badGeneralHeaderByte(blockOf({{29, 0xFF}}).data()), 29);
  EXPECT_EQ(badGeneralHeaderByte(blockOf({{32, 0xF0}}).data()), 32);
  EXPECT_EQ(badScanHeaderByte(blockOf({{9, 0x99}, {10, 0x9A}}).data()), 10);
  EXPECT_TRUE(canBeTraceHeader(blockOf({{1, 0x0A}, {3, 0x99}, {4, 0xFF}, {6, 0x0A}}, 20).data()));
  EXPECT_FALSE(canBeTraceHeader(blockOf({{3, 0x1A}}, 20).data()));
  EXPECT_FALSE(canBeTraceHeader(blockOf({{4, 0xF0}}, 20).data()));
  EXPECT_TRUE(isGeneralHeader(blockOf({{3, 0x80}, {4, 0x58}}).data()));
  EXPECT_TRUE(isGeneralHeader(blockOf({{4, 0x15}}).data()));
  EXPECT_FALSE(isGeneralHeader("   1SD1.0RECORD  0               "));
  EXPECT_FALSE(isGeneralHeader(blockOf({{3, 0x80}, {4, 0x57}}).data()));
}

// ---- lists ------------------------------------------------------------------------------------------------------

TEST(SegdList, LinesAsTheyAreTyped) {
  const struct {
    const char* line;
    int start, end;
  } rows[] = {{"10 - 12", 10, 12},
              {"12 - 10", 12, 12},
              {"10\t-\t12", 10, 12},
              {"7", 7, 7},
              {"10-12", 10, 10},
              {"10 -12", 10, 10},
              {"5 -", 5, 5},
              {"-5", -5, -5},
              {"-5 - 2", -5, 2},
              {"- 5", 0, 0},
              {"line", 0, 0},
              {"3 to 9", 3, 3},
              {"3 x - 9", 3, 3},
              {"4 - 6 - 9", 4, 6},
              {"1 - x", 1, 1},
              {"99999999999", 2147483647, 2147483647},
              {"1 - 2000000000", 1, 2000000000}};
  for (const auto& row : rows) {
    int start = -77;
    int end = -77;
    getRange(row.line, &start, &end);
    EXPECT_EQ(start, row.start) << row.line;
    EXPECT_EQ(end, row.end) << row.line;
  }
}

TEST(SegdList, SetsOfNumbersAreSortedAndJoined) {
  SortedIntArray set;
  EXPECT_FALSE(set.contains(0));
  set.add(50, 40);
  set.add(10, 12);
  set.add(13, 13);
  set.add(11, 15);
  set.add(2000000000, 2147483647);
  set.add(-2147483647 - 1, -5);
  ASSERT_EQ(set.ranges().size(), 4U);
  EXPECT_EQ(set.ranges()[1].start, 10);
  EXPECT_EQ(set.ranges()[1].end, 15);
  for (const int in : {-2147483647 - 1, -5, 10, 14, 15, 50, 2000000000, 2147483647})
    EXPECT_TRUE(set.contains(in)) << in;
  for (const int outside : {-4, 9, 16, 40, 49, 51, 1999999999}) {
    EXPECT_FALSE(set.contains(outside)) << outside;
    EXPECT_EQ(set.indexOf(outside), -1) << outside;
  }
  EXPECT_EQ(set.indexOf(10), 2147483644);
  EXPECT_EQ(set.indexOf(50), 2147483650);
  EXPECT_LT(CompareInts({1, 5}, {2, 3}), 0);
  EXPECT_EQ(CompareInts({2, 5}, {2, 3}), 0);
}

using SegdListFile = SegdTest;

TEST_F(SegdListFile, IsReadLineByLineWhateverItsEnds) {
  const std::string comment(200, 'x');
  listFieldFiles("10 - 12\r\n\r\n \t\n  20\t" + comment + "\n12-14\nfoo\n1 2\n1 - 2000000000");
  forgetConsole();
  EXPECT_EQ(initFFIDList(), 0);
  EXPECT_EQ(FFIDList.ranges().size(), 1U);
  EXPECT_TRUE(fieldFileInRange(2000000000));
  EXPECT_TRUE(fieldFileInRange(0));  // a line without a number counts 0, and that is said
  EXPECT_FALSE(fieldFileInRange(-1));
  const std::string path = folder.path("files.txt");
  EXPECT_EQ(consoleWithoutDates(), (Lines{" ", "Initializing inclusion files list...", " ", " ", " ", " ", " ",
                                          "  ** Line 5 of " + path + " is taken as 12 only: 12-14", " ",
                                          "  ** Line 6 of " + path + " is taken as 0 only: foo", " ",
                                          "  ** Line 7 of " + path + " is taken as 1 only: 1 2", " ", " "}));

  listFieldFiles("5\n", SEGD_EXCLUDE);
  EXPECT_EQ(initFFIDList(), 0);
  EXPECT_TRUE(consoleHas("Initializing exclusion files list..."));
  EXPECT_FALSE(fieldFileInRange(5));
  EXPECT_TRUE(fieldFileInRange(10));  // nothing of the list before

  listZeroes("", 5, SEGD_KEY_INT16);
  EXPECT_EQ(initTraceList(), 0);
  EXPECT_TRUE(consoleHas("Initializing zero trace header list..."));
  EXPECT_FALSE(traceInZeroRange(0));
  std::filesystem::remove(folder.path("zero.txt"));
  EXPECT_EQ(initTraceList(), -1);
  EXPECT_TRUE(consoleHas("  *** Error opening list file: " + folder.path("zero.txt")));
  std::filesystem::create_directory("zero.txt");
  EXPECT_EQ(initTraceList(), -1);
  EXPECT_TRUE(consoleHas("  *** Error reading list file: " + folder.path("zero.txt")));
}

}  // namespace
