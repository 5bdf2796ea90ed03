// Values into header fields, reel headers and traces of SEG Y outputs on disk and tape, field files, the next tape, the
// way out after a failure.

#include "quarlo/tapelib/formats/segywriter.h"
#include "quarlo/tapelib/console.h"

#include <array>
#include <climits>
#include <cmath>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "libkyr/segysamples.h"
#include "quarlo/tapelib/formats/charsets.h"
#include "quarlo/tapelib/formats/fieldfile.h"
#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/frame/rfmttape.h"
#include "tests/segycopy/segy_fixture.h"
#include "tests/support/segy_reader.h"

namespace {

SegyField fieldAt(int type, int offset, const char* name = "X") {
  SegyField field;
  copyText(field.itsName, name);
  field.itsType = static_cast<KyrType>(type);
  field.itsOffset = offset;
  return field;
}

template <typename T>
FieldValue made(double number) {
  const T typed = static_cast<T>(number);
  FieldValue value{};
  std::memcpy(&value, &typed, sizeof typed);
  return value;
}
template <typename T>
double read(const FieldValue& value) {
  T typed{};
  std::memcpy(&typed, &value, sizeof typed);
  return static_cast<double>(typed);
}
constexpr std::array<FieldValue (*)(double), 5> makers = {made<std::int8_t>, made<std::int16_t>, made<std::int32_t>,
                                                          made<float>, made<double>};
constexpr std::array<double (*)(const FieldValue&), 5> readers = {read<std::int8_t>, read<std::int16_t>,
                                                                  read<std::int32_t>, read<float>, read<double>};
FieldValue valueOf(int type, double number) { return makers.at(static_cast<std::size_t>(type - byteType))(number); }
double numberOf(int type, const FieldValue& value) {
  return readers.at(static_cast<std::size_t>(type - byteType))(value);
}

// ---- coercion and encoding --------------------------------------------------------------------------------------

using Numbers = std::vector<double>;

Numbers coerced(int from, int to, const Numbers& numbers) {
  Numbers results;
  for (const double number : numbers) {
    const FieldValue in = valueOf(from, number);
    FieldValue out{};
    EXPECT_TRUE(segyCoerce(&in, from, &out, to));
    results.push_back(numberOf(to, out));
  }
  return results;
}

TEST(SegyCoerce, IntegersLoseHighBitsAndFloatsEndAtTheTypesEnds) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(coerced(4, 3, {70000, 40000, -5}), (Numbers{4464, -25536, -5}));
  EXPECT_EQ(coerced(4, 2, {200, 65536}), (Numbers{-56, 0}));
  EXPECT_EQ(coerced(3, 2, {-300}), (Numbers{-44}));
  EXPECT_EQ(coerced(2, 4, {-5}), (Numbers{-5}));
  EXPECT_EQ(coerced(3, 4, {-32768}), (Numbers{-32768}));
  EXPECT_EQ(coerced(6, 4, {3.9, 1e10, -1e10, infinity, 2147483647.5, std::nan("")}),
            (Numbers{3, INT_MAX, INT_MIN, INT_MAX, INT_MAX, 0}));
  EXPECT_EQ(coerced(6, 3, {-3.9, 40000, -40000}), (Numbers{-3, 32767, -32768}));
  EXPECT_EQ(coerced(5, 2, {127.9, 300, -infinity}), (Numbers{127, 127, -128}));
  EXPECT_EQ(coerced(4, 5, {16777217}), (Numbers{16777216}));
  EXPECT_EQ(coerced(4, 6, {16777217}), (Numbers{16777217}));
  EXPECT_EQ(coerced(2, 5, {-1}), (Numbers{-1}));
  EXPECT_EQ(coerced(5, 6, {0.5}), (Numbers{0.5}));
  EXPECT_EQ(coerced(6, 5, {1e300, 0.1}), (Numbers{infinity, double{0.1F}}));
  const FieldValue in = valueOf(longIntType, 1);
  for (const auto& [from, to] : {std::pair{1, 4}, {7, 4}, {4, 1}, {4, 7}, {0, 0}, {-1, 4}}) {
    FieldValue out = valueOf(doubleFloatType, 99);
    EXPECT_FALSE(segyCoerce(&in, from, &out, to));
    EXPECT_EQ(out.doubleValue, 99);
  }
}

std::string encoded(SegyField field, double value, bool swap, std::size_t headerBytes = 10) {
  std::string header(headerBytes, '.');
  const FieldValue in = isKyrType(field.itsType) ? valueOf(field.itsType, value) : FieldValue{};
  encodeSegyField(header, &in, &field, swap);
  return header;
}

TEST(SegyEncode, StoresScaledValuesInEitherByteOrder) {
  const auto bytes = [](std::initializer_list<int> values) {
    std::string text;
    for (const int value : values) text += static_cast<char>(value);
    return text;
  };
  SegyField field = fieldAt(shortIntType, 1);
  EXPECT_EQ(encoded(field, 0x1234, true), '.' + bytes({0x12, 0x34}) + ".......");
  EXPECT_EQ(encoded(field, 0x1234, false), '.' + bytes({0x34, 0x12}) + ".......");
  field.itsScaleFactor = 1000;
  EXPECT_EQ(encoded(field, 300, true), '.' + bytes({0x7F, 0xFF}) + ".......");
  field.itsScaleFactor = -0.001;
  EXPECT_EQ(encoded(field, 1999, true), '.' + bytes({0xFF, 0xFF}) + ".......");  // -1.999 towards zero
  field.itsScaleFactor = std::nan("");
  EXPECT_EQ(encoded(field, 1999, true), '.' + bytes({0, 0}) + ".......");
  EXPECT_EQ(encoded(fieldAt(byteType, 9), 0x41, true), ".........A");
  field = fieldAt(longIntType, 0);
  field.itsScaleFactor = 2;
  EXPECT_EQ(encoded(field, 0x40000000, true), bytes({0x7F, 0xFF, 0xFF, 0xFF}) + "......");
  EXPECT_EQ(encoded(field, 0x01020304, false), bytes({8, 6, 4, 2}) + "......");
  field = fieldAt(singleFloatType, 6);
  field.itsScaleFactor = 0.5;
  EXPECT_EQ(encoded(field, 2, true), "......" + bytes({0x3F, 0x80, 0, 0}));
  EXPECT_EQ(encoded(fieldAt(doubleFloatType, 2), -2, true), ".." + bytes({0xC0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(encoded(fieldAt(doubleFloatType, 2), -2, false), ".." + bytes({0, 0, 0, 0, 0, 0, 0, 0xC0}));
  EXPECT_EQ(encoded(fieldAt(7, 0), 1, true), "..........");
}

TEST(SegyEncode, NeverTouchesAByteOutsideTheHeader) {
  for (const auto& [type, offset] :
       {std::pair{4, 7}, {4, 10}, {3, 9}, {2, 10}, {6, 3}, {4, -1}, {4, -4}, {2, INT_MAX}, {6, INT_MIN}}) {
    SCOPED_TRACE(offset);
    std::string header(10, '.');
    const FieldValue in = valueOf(type, 1);
    const SegyField field = fieldAt(type, offset);
    EXPECT_EQ(encodeSegyField(header, &in, &field, true), FieldPut::Outside);
    EXPECT_EQ(header, "..........");
  }
  EXPECT_EQ(encoded(fieldAt(byteType, 0), 1, true, 0), "");
}

TEST(SegyEncode, PutsByNameAndAFixedValueWins) {
  SegyFormat format;
  addSegyField(&format, false, fieldAt(shortIntType, 0, "A"));
  SegyField* const fixed = addSegyField(&format, false, fieldAt(longIntType, 4, "B"));
  addSegyField(&format, false, fieldAt(byteType, 8, "C"));
  std::string header(9, '.');
  const std::int32_t number = 0x41424344;
  const double real = 66.9;
  EXPECT_EQ(putFieldValue(&number, format.itsTraceFields, header, true, longIntType, "A"), FieldPut::Stored);
  EXPECT_EQ(putFieldValue(&number, format.itsTraceFields, header, true, longIntType, "B"), FieldPut::Stored);
  EXPECT_EQ(putFieldValue(&real, format.itsTraceFields, header, true, doubleFloatType, "C"), FieldPut::Stored);
  EXPECT_EQ(header, "CD..ABCDB");
  EXPECT_EQ(putFieldValue(&number, format.itsTraceFields, header, true, longIntType, "D"), FieldPut::Missing);
  EXPECT_EQ(putFieldValue(&number, format.itsTraceFields, header, true, 7, "A"), FieldPut::Missing);
  EXPECT_EQ(putFieldValue(&number, nullptr, header, true, longIntType, "A"), FieldPut::Missing);
  EXPECT_EQ(header, "CD..ABCDB");
  fixed->itIsOverridden = 1;
  fixed->itsOverrideValue.longValue = 0x30303030;
  EXPECT_EQ(putFieldValue(&number, format.itsTraceFields, header, true, 7, "B"), FieldPut::Stored);
  EXPECT_EQ(header, "CD..0000B");
}

TEST(SegyEncode, SamplesOfFormats3And8TakeTwoBytes) {
  for (int code = -1; code < 20; ++code) EXPECT_EQ(GetSegyBytes(code), code == 3 || code == 8 ? 2 : 4) << code;
}

// ---- outputs ----------------------------------------------------------------------------------------------------

class SegyWriterTest : public SegyTest {
 protected:
  SegyWriterTest() {
    record.consoleLine = console_out;
    SetDevUnit(&record, units);
    useShipped(0);
  }

  void useShipped(int revision) {
    FILE_SPEC file{};
    copyText(file.dir.path, QUARLO_FORMATS);
    copyText(file.name, "segy-rev" + std::to_string(revision) + ".txt");
    Lines messages;
    format = SegyFormat{};
    ASSERT_TRUE(loadSegyFormat(file, &format, &messages));
  }
  void wishOutputFile(const std::string& name) {
    units[1].type = UT_DISK;
    units[1].fs = specOf(name);
  }
  void fix(const char* name, int value) {
    SegyField* const field = getField(format.itsBinaryFields, name);
    field->itIsOverridden = 1;
    field->itsOverrideValue.shortValue = static_cast<std::int16_t>(value);
  }
  int begin(const char* text = nullptr, float interval = 2.0F, int samples = 5) {
    forgetConsole();
    return initSegyOut(&record, &format, 24, 2, interval, samples, 1, 6000, 25, 2, text);
  }
  /// Both reel headers on disk.
  std::string headersOnDisk(const char* text = nullptr, float interval = 2.0F, int samples = 5) {
    wishOutputFile("out.sgy");
    EXPECT_EQ(begin(text, interval, samples), 0);
    closeDiskUnit(&units[1]);
    return output();
  }
  std::string textHeader(const char* text = nullptr) { return headersOnDisk(text).substr(0, format.itsReelBytes); }
  static int shortAt(const std::string& bytes, std::size_t place) { return bigAt(bytes + "..", place) >> 16; }

  // A plain record: what the library hangs on it is closed by the tests.
  ProcessRecord record{};
  SegyFormat format;
};

TEST_F(SegyWriterTest, ReelHeadersOnDiskAndOnEveryTape) {
  const std::string headers = headersOnDisk();
  EXPECT_EQ(headers.substr(0, 3200), std::string(3200, '\x40'));
  std::string binary(400, '\0');
  for (const auto& [place, value] : std::vector<std::pair<std::size_t, unsigned>>{
           {12, 24}, {14, 2}, {16, 2000}, {20, 5}, {24, 1}, {36, 6000}, {40, 25}, {48, 2}})
    putBig(&binary, place, value, 2);
  EXPECT_EQ(headers.substr(3200), binary);
  EXPECT_EQ(consoleWithoutDates(), Lines{});

  units[1].type = UT_NONE;
  putIn(0, "a.tap");
  putIn(1, "b.tap");
  openOutputTapes({0, 1});
  EXPECT_EQ(begin(), 0);
  closeUnits();
  const Tape written = tapeIn("a.tap");
  ASSERT_GE(written.size(), 2U);
  EXPECT_EQ(written[0] + written[1], headers);
  EXPECT_EQ(written[0].size(), 3200U);
  EXPECT_EQ(written, tapeIn("b.tap"));
}

TEST_F(SegyWriterTest, ValuesBeyondAFieldsType) {
  EXPECT_EQ(shortAt(headersOnDisk(nullptr, 40.0F, 40000), 3216), -25536);  // 40,000 for all who read it unsigned
  EXPECT_EQ(shortAt(output(), 3220), -25536);
  EXPECT_EQ(consoleWithoutDates(), Lines{});
  headersOnDisk(nullptr, 2.0F, 70000);
  std::string header(240, '\0');
  for (int i = 0; i < 2; ++i) fillTraceHeader(&format, header.data(), 1, 2, 3, 4, 65536, 2.0F);
  EXPECT_EQ(consoleWithoutDates(),
            (Lines{"  ** Field \"Nt\" cannot hold 70000.", "  ** Field \"Nt\" cannot hold 65536."}));
  // Single precision decides: in double precision the product is 248.99...
  EXPECT_EQ(shortAt(headersOnDisk(nullptr, 0.249F), 3216), 249);
  getField(format.itsTraceFields, "Dt")->itsType = longIntType;
  fillTraceHeader(&format, header.data(), 1, 2, 3, 4, 5, 3e9F);
  EXPECT_EQ(bigAt(header, 116), INT_MAX);
  fillTraceHeader(&format, header.data(), 1, 2, 3, 4, 5, std::nanf(""));
  EXPECT_EQ(bigAt(header, 116), 0);
}

TEST_F(SegyWriterTest, EveryWholeIntervalComesOutAsItIs) {
  std::string header(240, '\0');
  for (int microseconds = 1; microseconds <= 65535; ++microseconds) {
    fillTraceHeader(&format, header.data(), 1, 1, 1, 1, 1, segyInterval(microseconds / 1e6));
    ASSERT_EQ(shortAt(header, 116) & 0xFFFF, microseconds);
  }
  EXPECT_EQ(shortAt(headersOnDisk(nullptr, segyInterval(0.065535)), 3216) & 0xFFFF, 65535);

  useShipped(2);
  format.itsExactInterval = 333.25;
  const std::string headers = headersOnDisk(nullptr, segyInterval(333.25e-6));
  EXPECT_EQ(shortAt(headers, 3216), 333);
  EXPECT_EQ(loadBeDouble(headers.data() + 3272), 333.25);
}

TEST_F(SegyWriterTest, MappedFieldsTakeTheFirstPropertyThatHasAValue) {
  SegyField field{};
  copyText(field.itsName, "Elevation");
  field.itsOffset = 40;
  field.itsScaleFactor = 100;
  field.outputKyrHeader[0] = trReceiverElevation;
  field.outputKyrHeader[1] = trSourceElevation;
  field.kyrHeaderCount = 2;
  addSegyField(&format, false, field);
  TraceInfo trace{};
  const auto set = [&trace](int property, float value) {
    SetTraceProperty(property, singleFloatType, gUnknownUnits, &value, &trace);
  };
  std::string header(240, '\0');
  set(trReceiverElevation, kNullFloat);
  set(trSourceElevation, -12.0F);
  set(trFieldFile, 77);
  fillMappedFields(&format, header.data(), trace);
  EXPECT_EQ(static_cast<int>(bigAt(header, 40)), -1200);
  EXPECT_EQ(bigAt(header, 8), 77U);
  set(trReceiverElevation, 34.0F);
  fillMappedFields(&format, header.data(), trace);
  EXPECT_EQ(bigAt(header, 40), 3400U);
}

TEST_F(SegyWriterTest, TheTextHeaderComesFromTheCallersText) {
  EXPECT_EQ(textHeader("C 1 AB~\xE9"), "\xC3\x40\xF1\x40\xC1\xC2\x60\x3F" + std::string(3192, '\x40'));
  EXPECT_EQ(textHeader(std::string(5000, 'A').c_str()), std::string(3200, '\xC1'));
  format.itHasReelEBCDIC = 0;
  EXPECT_EQ(textHeader("C 1"), "C 1" + std::string(3197, ' '));
  EXPECT_EQ(textHeader(), std::string(3200, ' '));
  format.itsReelBytes = 7;
  const std::vector<char> tight = {'n', 'o', ' ', 'e', 'n', 'd', '!'};  // not a byte behind them is read
  EXPECT_EQ(textHeader(tight.data()), "no end!");
}

TEST_F(SegyWriterTest, TheTextHeaderComesFromATextFile) {
  const std::string path = folder.path("reel.txt");
  format.itUsesTextFile = 1;
  format.itsTextFileSpec = specOf("reel.txt");
  writeFile(path, "C 1\xFF\n");
  EXPECT_EQ(textHeader("not this"), "\xC3\x40\xF1\x3F\x25" + std::string(3195, '\0'));
  EXPECT_EQ(consoleWithoutDates(), Lines{"Reel header will be created from file: " + path});
  format.itHasReelEBCDIC = 0;
  EXPECT_EQ(textHeader(), "C 1\xFF\n" + std::string(3195, '\0'));
  writeFile(path, std::string(4000, 'x'));
  EXPECT_EQ(textHeader(), std::string(3200, 'x'));
  std::filesystem::remove(path);
  EXPECT_EQ(textHeader(), std::string(3200, '\0'));
  EXPECT_TRUE(consoleHas("  *** Error opening text file. Reel header will be blank"));
  std::filesystem::create_directory(path);
  EXPECT_EQ(textHeader(), std::string(3200, '\0'));
  EXPECT_TRUE(consoleHas("  *** Error reading text file. Reel header will be blank"));
}

TEST_F(SegyWriterTest, HeadersThatTheFormatLacksAreNotWritten) {
  format.itHasReelHeader = 0;
  format.itIsBigEndian = 0;
  std::string binary = headersOnDisk();
  ASSERT_EQ(binary.size(), 400U);
  EXPECT_EQ(binary.substr(12, 4), std::string("\x18\0\x02\0", 4));
  format.itHasBinaryHeader = 0;
  EXPECT_EQ(headersOnDisk(), "");
  useShipped(1);
  EXPECT_EQ(shortAt(headersOnDisk(), 3500), 0x0100);  // a fixed value of a field that no program fills
}

TEST_F(SegyWriterTest, FieldsOutsideTheirHeaderAreLeftOutAndToldOnce) {
  format.itsBinaryBytes = 24;
  format.itsTraceBytes = 117;
  std::string trace(117 + 4 + 1, '.');
  const float sample = 1;
  static Lines told;
  told.clear();
  for (int output = 1; output <= 2; ++output) {
    if (output == 2) record.consoleLine = [](const char* line) { told.emplace_back(line); };
    const std::string headers = headersOnDisk();
    EXPECT_EQ(headers.size(), 3224U);
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(BuildFieldSegyTrace(&format, &sample, trace.data(), 1, 1, 1, 1, 1, 2.0F), 121);
    EXPECT_EQ(output == 1 ? consoleWithoutDates() : told,
              (Lines{"  ** Field \"SampFormat\" does not fit the 24 bytes of the binary header and is left out.",
                     "  ** Field \"SweepLength\" does not fit the 24 bytes of the binary header and is left out.",
                     "  ** Field \"SweepTrace\" does not fit the 24 bytes of the binary header and is left out.",
                     "  ** Field \"CorrCode\" does not fit the 24 bytes of the binary header and is left out.",
                     "  ** Field \"Dt\" does not fit the 117 bytes of the trace header and is left out."}));
  }
  EXPECT_EQ(trace.substr(115), std::string("\1\0\x41\x10\0\0.", 7));
}

TEST_F(SegyWriterTest, OutputsThatCannotBeWrittenEndTheJob) {
  std::filesystem::create_directory("dir.sgy");
  wishOutputFile("dir.sgy");
  EXPECT_EQ(begin(), -1);
  EXPECT_EQ(consoleWithoutDates(), Lines{"   *** Error opening file dir.sgy"});
  units[1].fs = specOf("full");
  std::filesystem::create_symlink("/dev/full", "full");
  EXPECT_EQ(begin(), -1);
  EXPECT_TRUE(consoleHas("  *** Error writing to output disk file."));
  closeDiskUnit(&units[1]);

  writeFile("in.sgy", "the only copy");
  openInputFile("in.sgy");
  std::filesystem::create_symlink("in.sgy", "link.sgy");
  wishOutputFile("link.sgy");
  EXPECT_EQ(begin(), -1);
  EXPECT_EQ(consoleWithoutDates(), Lines{"  *** Output file link.sgy is an input of this job and is not written."});
  EXPECT_EQ(readFile("in.sgy"), "the only copy");

  wishOutputFile("out.sgy");
  for (const int bytes : {0, -1, INT_MAX}) {
    format.itsReelBytes = bytes;
    EXPECT_EQ(begin(), -1);
    EXPECT_EQ(consoleWithoutDates(),
              Lines{"  *** The format description gives the text reel header " + std::to_string(bytes) + " bytes."});
  }
  closeDiskUnit(&units[1]);
  useShipped(0);
  units[1].type = UT_NONE;
  EXPECT_EQ(begin(), -1);  // no tape open
  putIn(0, "a.tap");
  putIn(1, "b.tap");
  openOutputTapes({0, 1});
  units[2].maxBlockSize = 399;
  EXPECT_EQ(begin(), -1);
  EXPECT_TRUE(consoleHas("  *** Error: block size (3200) is too large to write to output tape."));
  SetDevUnit(&record, nullptr);
  EXPECT_EQ(begin(), -1);
}

// ---- traces -----------------------------------------------------------------------------------------------------

TEST_F(SegyWriterTest, BuildsTracesOfFourAndTwoBytesASample) {
  const float samples[] = {1.0F, -118.625F, 0.0F};
  std::string trace(300, '.');
  ASSERT_EQ(BuildFieldSegyTrace(&format, samples, trace.data(), 3, 70001, 12, 3, 1, 2.0F), 252);
  std::string expected(240, '\0');
  putBig(&expected, 0, 70001);
  putBig(&expected, 8, 12);
  putBig(&expected, 12, 3);
  putBig(&expected, 28, 1, 2);
  putBig(&expected, 68, 0xFF9CFF9C);  // the scalars that the description fixes
  putBig(&expected, 114, 3, 2);
  putBig(&expected, 116, 2000, 2);
  EXPECT_EQ(trace, expected + std::string("\x41\x10\0\0\xC2\x76\xA0\0\0\0\0\0", 12) + std::string(48, '.'));

  fix("SampFormat", SEGY_INT16);
  trace.assign(300, '.');
  const float small[] = {0.5F, -0.25F, 0.0F};
  ASSERT_EQ(BuildFieldSegyTrace(&format, small, trace.data(), 3, 1, 12, 3, 1, 2.0F), 246);
  const int weight = shortAt(trace, 168);
  EXPECT_NE(weight, 0);
  EXPECT_EQ(std::ldexp(shortAt(trace, 240), -weight), 0.5);
  EXPECT_EQ(std::ldexp(shortAt(trace, 242), -weight), -0.25);
  EXPECT_EQ(trace.substr(244), std::string(2, '\0') + std::string(54, '.'));

  format.itIsBigEndian = 0;
  ASSERT_EQ(BuildFieldSegyTrace(&format, samples, trace.data(), 1, 0x01020304, 12, 3, 1, 2.0F), 242);
  EXPECT_EQ(trace.substr(0, 4) + trace.substr(240, 2), std::string("\x04\x03\x02\x01\x01\0", 6));
}

TEST_F(SegyWriterTest, BuildsATraceFromACallersHeader) {
  std::string header(240, 'h');
  std::string trace(260, '.');
  const float samples[] = {0.5F, 1.5F};
  ASSERT_EQ(BuildSegyTrace(&format, SEGY_IEEE_FLOAT, header.data(), samples, trace.data(), 2), 248);
  EXPECT_EQ(trace, header + std::string("\x3F\0\0\0\x3F\xC0\0\0", 8) + std::string(12, '.'));
  ASSERT_EQ(BuildSegyTrace(&format, SEGY_INT8, header.data(), samples, trace.data(), 2), 244);
  EXPECT_EQ(trace.substr(0, 168) + trace.substr(170, 70), header.substr(2));
  EXPECT_EQ(std::ldexp(shortAt(trace, 242), -shortAt(trace, 168)), 1.5);

  // Without trace headers the samples come first; the length still counts the header's bytes, which are zeros.
  format.itHasTraceHeader = 0;
  trace.assign(260, '.');
  ASSERT_EQ(BuildSegyTrace(&format, SEGY_IEEE_FLOAT, header.data(), samples, trace.data(), 2), 248);
  EXPECT_EQ(trace, std::string("\x3F\0\0\0\x3F\xC0\0\0", 8) + std::string(240, '\0') + std::string(12, '.'));
  ASSERT_EQ(BuildSegyTrace(&format, SEGY_IEEE_FLOAT, header.data(), samples, trace.data(), -1), 240);
  EXPECT_EQ(BuildSegyTrace(&format, SEGY_IEEE_FLOAT, header.data(), samples, trace.data(), INT_MAX / 4 - 59), 0);
}

TEST_F(SegyWriterTest, AnIndependentReaderReadsItBack) {
  if (!haveSegyReader()) GTEST_SKIP() << "python3-segyio is not installed";
  const std::vector<float> samples = {0.0F, 1.0F, -2.5F, 1e-3F, 12345.678F, -0.1F};
  const auto count = static_cast<int>(samples.size());
  for (const int code : {1, 2, 3, 5}) {
    SCOPED_TRACE(code);
    useShipped(code % 2);
    fix("SampFormat", code);
    wishOutputFile("out.sgy");
    ASSERT_EQ(begin("C 1 WRITTEN FOR A READER", 0.5F, count), 0);
    std::vector<char> trace(240 + samples.size() * 4);
    for (int number = 1; number <= 3; ++number) {
      std::vector<float> scaled = samples;
      for (float& sample : scaled) sample *= static_cast<float>(number);
      const int bytes =
          BuildFieldSegyTrace(&format, scaled.data(), trace.data(), count, number, 100 + number, 7, 1, 0.5F);
      ASSERT_EQ(std::fwrite(trace.data(), 1, static_cast<std::size_t>(bytes), units[1].fp),
                static_cast<std::size_t>(bytes));
    }
    closeDiskUnit(&units[1]);
    std::istringstream seen(
        python("import segyio,sys\n"
               "f=segyio.open(sys.argv[1],ignore_geometry=True)\n"
               "print(f.tracecount,int(f.format),segyio.dt(f),f.bin[segyio.BinField.Traces],f.bin[3501])\n"
               "print(f.text[0][0:24].decode().replace(\" \",\"_\"))\n"
               "for i in range(f.tracecount):\n"
               "  h=f.header[i]; w=h[169]\n"
               "  print(h[1],h[9],h[13],h[29],h[115],h[117],*[repr(float(x)/2.0**w) for x in f.trace[i]])",
               folder.path("out.sgy")));
    std::string line;
    std::getline(seen, line);
    EXPECT_EQ(line, "3 " + std::to_string(code) + " 500.0 24 " + (code % 2 == 1 ? "256" : "0"));
    std::getline(seen, line);
    EXPECT_EQ(line, "C_1_WRITTEN_FOR_A_READER");
    for (int number = 1; number <= 3; ++number) {
      int head[6] = {};
      for (int& word : head) seen >> word;
      EXPECT_EQ((std::vector<int>(head, head + 6)), (std::vector<int>{number, 100 + number, 7, 1, count, 500}));
      const double unit = code == 3 ? 12345.678 * number / 32767 : code == 5 ? 0 : 12345.678 * number / (1 << 20);
      for (const float sample : samples) {
        double value = -1;
        seen >> value;
        EXPECT_NEAR(value, double{sample * static_cast<float>(number)}, unit);
      }
    }
    EXPECT_FALSE(seen.fail());
  }
}

// ---- field files, tapes, failures -------------------------------------------------------------------------------

TEST_F(SegyWriterTest, SkipsFieldFilesAtAndBeyondBothLimitsAndThoseOfTheList) {
  MoreParams params{};
  forgetConsole();
  EXPECT_EQ(skipThisFile(&record, &params, 0), 0);
  params.itHasMinMaxOn = 1;
  params.itsFFMin = 10;
  params.itsFFMax = 20;
  for (int fieldFile = 8; fieldFile < 23; ++fieldFile)
    EXPECT_EQ(skipThisFile(&record, &params, fieldFile), fieldFile <= 10 || fieldFile >= 20 ? 1 : 0) << fieldFile;
  EXPECT_EQ(count("SKIPPING RECORD. Field file 10 is out of range."), 1);
  params.itHasListOn = 1;
  params.itsFFList[15] = 15;
  EXPECT_EQ(skipThisFile(&record, &params, 15), 1);
  EXPECT_EQ(skipThisFile(&record, &params, 16), 0);
  EXPECT_EQ(consoleWithoutDates().back(), "SKIPPING RECORD. Field file 15 is in list selection to be skipped.");
}

TEST(FieldFile, NumbersInNamesAndHexadecimalDigits) {
  const std::pair<const char*, int> names[] = {{"0012.segd", 12}, {"line-7b3", 7},          {"none", 0},
                                               {"", 0},           {"99999999999", INT_MAX}, {"x2147483647", INT_MAX}};
  for (const auto& [name, number] : names) EXPECT_EQ(getFFile(name), number) << name;
  for (const auto& [before, after] : std::vector<std::pair<std::string, const char*>>{
           {"0x1F g:aB", "01fab"}, {"09afAF", "09afaf"}, {"/:@G`g \xC1", ""}, {"", ""}}) {
    std::string text = before;
    checkHex(text.data());
    EXPECT_STREQ(text.c_str(), after);
  }
}

TEST_F(SegyWriterTest, TheNextTapeComesThroughTheProtocolOfAllJobs) {
  putIn(0, "a.tap", {"x"});
  openInputTape();
  units->autoMode = true;
  units->hasAutoLoader = true;  // no wait
  load(0, "");
  noFurtherTape();
  forgetConsole();
  EXPECT_EQ(doTapeContinue(&record), 0);
  const Lines lines = consoleWithoutDates();
  ASSERT_GE(lines.size(), 3U);
  EXPECT_EQ(lines[0], "Tape finished.");
  EXPECT_EQ(Lines(lines.end() - 2, lines.end()), (Lines{"Magazine finished.", "  "}));

  putIn(1, "b.tap");
  openOutputTapes({1});
  toolkit.onModal(DLG_OUT_CONTINUE, [this](WINDOW question) { toolkit.press(question, OC_CONTINUE); });
  EXPECT_EQ(doOutTapeContinue(&record), 1);
  SetDevUnit(&record, nullptr);
  EXPECT_EQ(doTapeContinue(&record) + doOutTapeContinue(&record), 0);
}

TEST_F(SegyWriterTest, BailClosesFilesRewindsTheTapeAndEndsTheProgressDialog) {
  const std::string box = "Error occurred during reformat. Check console for more information.";
  writeFile("in.sgy", "");
  openInputFile("in.sgy");
  openOutputFile("out.sgy");
  const WINDOW progress = xvt_dlg_create_res(
      WD_MODELESS, DLG_PROGRESS, [](WINDOW, EVENT*) -> long { return 0; }, nullptr);
  const long timer = xvt_timer_create(progress, 750);
  bail(&record, Link{}, progress, timer);
  for (int unit = 0; unit < 2; ++unit) {
    EXPECT_EQ(units[unit].fp, nullptr);
    EXPECT_EQ(units[unit].state, 0);
    EXPECT_STREQ(units[unit].name, "");
    EXPECT_STREQ(units[unit].fs.name, "");
  }
  EXPECT_FALSE(xvt_vobj_is_valid(progress));
  EXPECT_FALSE(toolkit.hasTimers());
  EXPECT_EQ(toolkit.errors, Lines{box});

  putIn(0, "a.tap", {"x", "y"});
  openInputTape();
  for (const bool stay : {true, false}) {
    units->inputNoRewind = stay;
    std::vector<char> block(units->ioBufLen);
    tlv_tape_read(units, 0, block.data(), 1);
    bail(&record, Link{}, NULL_WIN, 0);
    EXPECT_EQ(units->blockNum, stay ? 2 : 1);
    EXPECT_EQ(units->state, 1);
  }
}

TEST_F(SegyWriterTest, BailBringsADatasetOutputToItsEnd) {
  const int one = 1;
  const float sample = 7;
  const TraceInfo header{};
  Link link;
  SetNumberOfOutputs(&record, 1);
  ASSERT_EQ(NewOutputSeismicFile(&link, &record, "out.kyr", 0, kAnyUnknownSeismic, 0, 1), 0);
  SetDatasetProperty(&record, link, dsRecords, longIntType, gUnknownUnits, &one);
  SetDatasetProperty(&record, link, dsSamples, longIntType, gUnknownUnits, &one);
  ASSERT_EQ(EndInit(&record), 0);
  ASSERT_EQ(TracePut(&record, link, 1, 1, &sample, &header), 0);
  wishOutputFile("out.kyr");
  bail(&record, link, NULL_WIN, 0);
  EXPECT_EQ(CloseFile(&record, link), kyrBadCall);  // is closed already
  EXPECT_EQ(toolkit.errors.size(), 1U);

  forgetConsole();
  Link input;
  SetNumberOfInputs(&record, 1);
  EXPECT_EQ(NewInputFile(&input, &record, "out.kyr", 0, kAnySeismicType), 0);
  EXPECT_EQ(consoleWithoutDates(), Lines{});  // no word of a dataset that was cut off
  CloseAllFiles(&record);
}

}  // namespace
