#include "quarlo/tapelib/frame/segytext.h"

#include <array>
#include <vector>

#include "libkyr/text.h"
#include "quarlo/tapelib/frame/loglines.h"

namespace {

constexpr std::size_t kLines = 40;
constexpr std::size_t kLineBytes = 80;

struct SampleName {
  int code;
  const char* name;
};
constexpr std::array<SampleName, 4> kSampleNames = {{{1, "4-byte IBM floating point"},
                                                     {2, "4-byte integer, two's complement"},
                                                     {3, "2-byte integer, two's complement"},
                                                     {5, "4-byte IEEE floating point"}}};

std::string sampleName(int code) {
  for (const SampleName& each : kSampleNames)
    if (each.code == code) return each.name;
  return "see the binary header";
}

/// Where the fields stand that a reader looks for.
void addFields(const SegyFormat& format, std::vector<std::string>* lines) {
  constexpr std::size_t kMost = 24;
  for (const SegyField* field = format.itsTraceFields; field != nullptr && lines->size() < kMost;
       field = field->nextField) {
    if (field->itIsOverridden != 0 || field->itsDescription[0] == '\0') continue;
    const int first = field->itsOffset + 1;
    lines->push_back(formatText("BYTES %3d-%-3d %s", first, first + kyrTypeBytes(field->itsType) - 1,
                                std::string(fieldText(field->itsDescription)).c_str()));
  }
}

}  // namespace

std::string segyTextLines(const std::string& told, const SegyFormat& format, int sampleFormat,
                          const TraceCounts& counts, const KyrSegyOutput& how) {
  std::vector<std::string> lines = {
      "WRITTEN BY QUARLO, " + dateText(),
      "INPUT: " + told,
      "FORMAT: " + std::string(fieldText(format.itsName)) + (format.itIsBigEndian != 0 ? "" : ", LITTLE-ENDIAN"),
      "SAMPLES: " + sampleName(sampleFormat),
      formatText("%d SAMPLES A TRACE, INTERVAL %.9g MS", counts.samples, counts.interval * 1e3),
      formatText("AT MOST %d TRACES A RECORD", counts.tracesPerRecord),
      how.deadTraces != 0 ? "DEAD TRACES ARE WRITTEN, TRACE IDENTIFICATION 2" : "DEAD TRACES ARE LEFT OUT",
      how.stripAuxiliary != 0 ? "AUXILIARY TRACES ARE LEFT OUT" : "AUXILIARY TRACES ARE WRITTEN",
      "TRACE HEADER:",
  };
  addFields(format, &lines);
  lines.resize(kLines);
  lines[kLines - 1] = "END TEXTUAL HEADER";
  std::string text;
  for (std::size_t i = 0; i < kLines; ++i) {
    std::string line = formatText("C%2zu ", i + 1) + lines[i];
    line.resize(kLineBytes, ' ');
    text += line;
  }
  return text;
}
