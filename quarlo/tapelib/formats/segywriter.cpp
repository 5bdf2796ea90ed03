#include "quarlo/tapelib/formats/segywriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "libkyr/byteorder.h"
#include "libkyr/nullvalue.h"
#include "libkyr/partfile.h"
#include "libkyr/segysamples.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segydecode.h"
#include "quarlo/tapelib/formats/segyencode.h"
#include "quarlo/tapelib/formats/segyreel.h"
#include "quarlo/tapelib/tlv_fcn.h"

namespace {

constexpr std::array<std::string_view, 8> kBinaryNames = {"TracesPerRec", "AuxPerRec",   "Dt",         "Nt",
                                                          "SampFormat",   "SweepLength", "SweepTrace", "CorrCode"};
constexpr std::array<std::string_view, 7> kTraceNames = {
    "TraceNumber", "TraceType", "Nt", "Dt", "FieldFile", "FieldFileTraceNumber", "WeightingFactor"};

/// Whether an integer field holds a value for those who read it signed, or unsigned.
bool holds(const SegyField& field, std::int32_t value) {
  const int bits = 8 * kyrTypeBytes(field.itsType);
  return bits >= 32 || (value >= -(1 << (bits - 1)) && value < (1 << bits));
}

// ---- fields -----------------------------------------------------------------------------------------------------

/// Puts values into the fields of one header and says, once, which of them it does not hold.
class HeaderFields {
 public:
  HeaderFields(SegyFormat* format, bool isBinary, char* header)
      : list_(isBinary ? format->itsBinaryFields : format->itsTraceFields),
        bytes_(header, static_cast<std::size_t>(segyHeaderBytes(*format, isBinary))),
        swap_(format->itIsBigEndian != 0),
        say_(format->itsConsoleLine) {}

  void put(const char* name, std::int16_t value) { put(name, &value, shortIntType); }
  void put(const char* name, std::int32_t value) {
    SegyField* const field = getField(list_, name);
    if (field != nullptr && field->itIsOverridden == 0 && !holds(*field, value) &&
        getReplacement(list_, name) == nullptr)
      tellOnce(field, formatText("cannot hold %d", value));
    put(name, &value, longIntType);
  }
  void put(const char* name, std::uint16_t value) { put(name, &value, unsignedShortType); }
  /// The sample interval in microseconds. @param exact with its decimals, for the field that can hold them; or 0
  template <typename T>
  void putInterval(T cut, double exact) {
    put("Dt", cut);
    if (SegyField* const wider = getReplacement(list_, "Dt"); wider != nullptr && exact > 0)
      tell(wider, putFieldValue(&exact, list_, bytes_, swap_, doubleFloatType, wider->itsName));
  }

  /// The fields that are mapped from a trace's properties.
  void putProperties(const TraceInfo& trace) {
    for (SegyField* field = list_; field != nullptr; field = field->nextField)
      if (field->itIsOverridden == 0) putFirst(field, trace);
  }

  /// The fields that no program fills but the description itself does.
  void putFixedValues(std::span<const std::string_view> suppliedNames) {
    for (SegyField* field = list_; field != nullptr; field = field->nextField) {
      const bool isSupplied = std::ranges::count(suppliedNames, fieldText(field->itsName)) > 0;
      if (field->itIsOverridden != 0 && !isSupplied)
        tell(field, encodeSegyField(bytes_, &field->itsOverrideValue, field, swap_));
    }
  }

 private:
  void put(const char* name, const void* value, int type) {
    tell(getField(list_, name), putFieldValue(value, list_, bytes_, swap_, type, name));
    if (SegyField* const wider = getReplacement(list_, name))
      tell(wider, putFieldValue(value, list_, bytes_, swap_, type, wider->itsName));
  }
  /// The value comes as it is kept: the field's type is the encoder's business. A scalar counts where the description
  /// fixes it: as the value goes out, so does the scalar.
  void putFirst(SegyField* field, const TraceInfo& trace) {
    const auto properties = std::span(field->outputKyrHeader).first(static_cast<std::size_t>(field->kyrHeaderCount));
    for (const TraceProperty property : properties) {
      double value = 0;
      if (GetTraceProperty(property, doubleFloatType, gUnknownUnits, &value, &trace) != 0 || IsValueNull(value))
        continue;
      tell(field, encodeSegyNumber(bytes_, segyUnscaled(value, scalarOf(*field)), *field, swap_));
      return;
    }
  }
  double scalarOf(const SegyField& field) const {
    if (field.itsScaleField[0] == '\0') return 0;
    return overrideOf(list_, std::string(fieldText(field.itsScaleField)).c_str(), 0);
  }
  void tell(SegyField* field, FieldPut result) {
    if (result != FieldPut::Outside) return;
    tellOnce(field, formatText("does not fit the %zu bytes of the %s header and is left out", bytes_.size(),
                               field->itIsBinaryField != 0 ? "binary" : "trace"));
  }
  void tellOnce(SegyField* field, const std::string& what) {
    if (std::exchange(field->itIsTold, short{1}) != 0) return;
    const std::string line =
        formatText("  ** Field \"%s\" %s.", std::string(fieldText(field->itsName)).c_str(), what.c_str());
    (say_ != nullptr ? say_ : console_out)(line.c_str());
  }

  SegyField* list_;
  std::span<char> bytes_;
  bool swap_;
  void (*say_)(const char* line);
};

void forgetTold(SegyField* list) {
  for (SegyField* field = list; field != nullptr; field = field->nextField) field->itIsTold = 0;
}

/// A sample interval in microseconds. The product is a float as the interval is: in double precision an interval such
/// as 0.249 would come out one less.
template <typename T>
T microseconds(float milliseconds) {
  return cutTo<T>(milliseconds * 1000.0F);
}

// ---- reel headers -----------------------------------------------------------------------------------------------

void say(ProcessRecord* procRecord, const std::string& line) { do_console_out(procRecord, line.c_str()); }

bool openOutputFile(ProcessRecord* procRecord, UnitStruct* units) {
  UnitStruct& output = units[1];
  const FILE_SPEC file = output.fs;
  if (isOpenFile(units[0], file)) {
    say(procRecord, formatText("  *** Output file %s is an input of this job and is not written.", file.name));
    return false;
  }
  closeDiskUnit(&output);
  if (openDiskUnit(&output, file, "wb")) return true;
  output.fs = file;
  say(procRecord, formatText("   *** Error opening file %s", file.name));
  return false;
}

/// Writes a reel header to the disk file (as far as the disk, so that a full one is noticed here) or to every tape.
bool writeReelHeader(ProcessRecord* procRecord, UnitStruct* units, std::string_view header) {
  std::FILE* const file = units[1].fp;
  if (units[1].type != UT_DISK)
    return tlv_tape_write(units, kAllOutputs, header.data(), static_cast<int>(header.size())) >= 1;
  if (std::fwrite(header.data(), 1, header.size(), file) == header.size() && std::fflush(file) == 0) return true;
  say(procRecord, "  *** Error writing to output disk file.");
  return false;
}

bool isHeaderLength(ProcessRecord* procRecord, int bytes, const char* which) {
  if (bytes >= 1 && bytes <= kMaxSegyHeaderBytes) return true;
  say(procRecord, formatText("  *** The format description gives the %s reel header %d bytes.", which, bytes));
  return false;
}

// ---- traces -----------------------------------------------------------------------------------------------------

/// Bytes of a trace; 0 when an int cannot hold them.
int traceLength(const SegyFormat& format, int sampleFormat, int samples) {
  const std::int64_t bytes =
      std::int64_t{GetSegyBytes(sampleFormat)} * std::max(0, samples) + segyHeaderBytes(format, false);
  return bytes <= std::numeric_limits<int>::max() ? static_cast<int>(bytes) : 0;
}

/// Puts the samples behind the header, in their bytes' order, and the weighting factor into it.
void buildSamples(SegyFormat* format, int sampleFormat, const float* input, char* trace, int samples) {
  const bool hasHeader = format->itHasTraceHeader != 0;
  const auto headerBytes = static_cast<std::size_t>(segyHeaderBytes(*format, false));
  const auto count = static_cast<std::size_t>(std::max(0, samples));
  const int sampleBytes = GetSegyBytes(sampleFormat);
  char* const data = trace + (hasHeader ? headerBytes : 0);
  const short weight = sgyIbmOut(input, data, samples, sampleFormat);
  if (format->itIsBigEndian != 0) sampleBytes == 2 ? byteswap(data, count) : longswap(data, count);
  if (!hasHeader)
    std::memset(data + count * static_cast<std::size_t>(sampleBytes), 0, headerBytes);
  else if (weight != 0)
    HeaderFields(format, false, trace).put("WeightingFactor", std::int16_t{weight});
}

}  // namespace

int initSegyOut(ProcessRecord* procRecord, SegyFormat* segyFmt, short tracesPerRecord, short auxPerRecord,
                float sampleInterval, int samplesPerTrace, short sampleFormat, short sweepLength, short sweepChannel,
                short corrFlag, const char* ebcdicText) {
  UnitStruct* const units = GetDevUnit(procRecord);
  if (units == nullptr) return -1;
  if (units[1].type == UT_DISK && !openOutputFile(procRecord, units)) return -1;
  segyFmt->itsConsoleLine = procRecord->consoleLine;
  forgetTold(segyFmt->itsBinaryFields);
  forgetTold(segyFmt->itsTraceFields);
  if (segyFmt->itHasReelHeader != 0 &&
      (!isHeaderLength(procRecord, segyFmt->itsReelBytes, "text") ||
       !writeReelHeader(procRecord, units, segyTextHeader(procRecord, *segyFmt, ebcdicText))))
    return -1;
  if (segyFmt->itHasBinaryHeader == 0) return 0;
  if (!isHeaderLength(procRecord, segyFmt->itsBinaryBytes, "binary")) return -1;
  std::string header(static_cast<std::size_t>(segyFmt->itsBinaryBytes), '\0');
  HeaderFields fields(segyFmt, true, header.data());
  fields.put("TracesPerRec", tracesPerRecord);
  fields.put("AuxPerRec", auxPerRecord);
  fields.putInterval(microseconds<std::uint16_t>(sampleInterval), segyFmt->itsExactInterval);
  fields.put("Nt", std::int32_t{samplesPerTrace});
  fields.put("SampFormat", sampleFormat);
  fields.put("SweepLength", sweepLength);
  fields.put("SweepTrace", sweepChannel);
  fields.put("CorrCode", corrFlag);
  fields.putFixedValues(kBinaryNames);
  return writeReelHeader(procRecord, units, header) ? 0 : -1;
}

void fillMappedFields(SegyFormat* segyFmt, char* header, const TraceInfo& trace) {
  HeaderFields(segyFmt, false, header).putProperties(trace);
}

float segyInterval(double seconds) {
  return std::nextafter(static_cast<float>(std::round(seconds * 1e6) / 1000.0), std::numeric_limits<float>::infinity());
}

bool amendTracesPerRecord(const std::string& path, SegyFormat* segyFmt, short tracesPerRecord) {
  if (segyFmt->itHasBinaryHeader == 0) return true;
  const auto place = static_cast<std::uint64_t>(segyFmt->itHasReelHeader != 0 ? segyFmt->itsReelBytes : 0);
  std::vector<unsigned char> header(static_cast<std::size_t>(segyFmt->itsBinaryBytes));
  PartFile file;
  if (!file.open(path, PartFile::Mode::Update)) return false;
  const auto got = file.readAt(place, header.data(), header.size());
  if (!got) return false;
  header.resize(*got);
  if (header.size() == static_cast<std::size_t>(segyFmt->itsBinaryBytes))
    HeaderFields(segyFmt, true, reinterpret_cast<char*>(header.data())).put("TracesPerRec", tracesPerRecord);
  return file.writeAt(place, header.data(), header.size()) == header.size() && file.close();
}

void fillTraceHeader(SegyFormat* segyFmt, char* header, int traceNumber, int fieldFileNumber, int channel,
                     int traceType, int numberOfSamples, float sampleInterval) {
  HeaderFields fields(segyFmt, false, header);
  fields.put("TraceNumber", std::int32_t{traceNumber});
  fields.put("TraceType", std::int32_t{traceType});
  fields.put("Nt", std::int32_t{numberOfSamples});
  fields.putInterval(microseconds<std::int32_t>(sampleInterval), segyFmt->itsExactInterval);
  fields.put("FieldFile", std::int32_t{fieldFileNumber});
  fields.put("FieldFileTraceNumber", std::int32_t{channel});
  fields.putFixedValues(kTraceNames);
}

int BuildFieldSegyTrace(SegyFormat* segyFmt, const float* inputData, char* segyTrace, int samples, int seqNum,
                        int fieldFile, int channel, int traceType, float sampInt) {
  const int format = overrideOf(segyFmt->itsBinaryFields, "SampFormat", SEGY_IBM_FLOAT);
  const int length = traceLength(*segyFmt, format, samples);
  if (length == 0) return 0;
  if (segyFmt->itHasTraceHeader != 0) {
    std::memset(segyTrace, 0, static_cast<std::size_t>(segyHeaderBytes(*segyFmt, false)));
    fillTraceHeader(segyFmt, segyTrace, seqNum, fieldFile, channel, traceType, std::max(0, samples), sampInt);
  }
  buildSamples(segyFmt, format, inputData, segyTrace, samples);
  return length;
}

int BuildSegyTrace(SegyFormat* segyFmt, int sampleFmt, const char* header, const float* inputData, char* segyTrace,
                   int samples) {
  const int length = traceLength(*segyFmt, sampleFmt, samples);
  if (length == 0) return 0;
  if (segyFmt->itHasTraceHeader != 0)
    std::memmove(segyTrace, header, static_cast<std::size_t>(segyHeaderBytes(*segyFmt, false)));
  buildSamples(segyFmt, sampleFmt, inputData, segyTrace, samples);
  return length;
}
