/// SEG Y. As input, files on disk and tapes through a source of their traces; as output format the choices of how it is
/// written: the module that reads writes it, through the run of all reformats.
#include <algorithm>
#include <memory>

#include "libkyr/datasets.h"
#include "plugins/kyrmodule.h"
#include "plugins/ownblock.h"
#include "plugins/segy/input_dlg.h"
#include "plugins/segy/output_dlg.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/frame/fieldchoice.h"
#include "quarlo/tapelib/frame/reformatloop.h"
#include "quarlo/tapelib/frame/segysource.h"
#include "quarlo/tapelib/frame/segytapesource.h"

namespace {

constexpr const char* kReadingDescription = "segy-rev2.txt";

std::unique_ptr<ReformatRun> theRun;

SegySourceParams paramsOf(ProcessRecord* record, const KyrSegyInput& how) {
  SegySourceParams params;
  if (how.text != KYR_TEXT_TOLD_APART)
    params.choices.text = how.text == KYR_TEXT_ASCII ? SegyText::Ascii : SegyText::Ebcdic;
  if (how.byteOrder != KYR_ORDER_DESCRIBED) params.choices.bigEndian = how.byteOrder == KYR_ORDER_BIG;
  params.choices.sampleFormat = how.sampleFormat;
  params.choices.records.field = fieldText(how.recordField);
  params.choices.records.tracesPerRecord = static_cast<std::uint64_t>(std::max(0, how.tracesPerRecord));
  params.gridLines = how.gridLines != 0;
  params.mostTraces = how.tape.traces;
  params.oneFile = how.tape.oneFile != 0;
  params.survey = record->diskFileOutputType == KYR_CHECK_RUN;
  if (how.fieldFiles.hasLimits != 0 || how.fieldFiles.leftOutCount > 0)
    params.skips = [record, files = fieldFileChoice(how.fieldFiles)](int fieldFile) {
      return skipThisFile(record, &files, fieldFile) != 0;
    };
  return params;
}

/// An input that was opened; its source is null after a line.
struct Opened {
  std::unique_ptr<TraceSource> source{};
  ReformatInput input{};
};

void say(ProcessRecord* record, const std::string& line) { kyrSay(record, line.c_str()); }

/// What is odd, as a warning.
SegyFileSource::Say warner(ProcessRecord* record) {
  return [record](const std::string& line) { say(record, line.starts_with("  *") ? line : "  ** " + line); };
}

std::string toldOf(const SegyLayout& layout) {
  return formatText("SEG Y REVISION %d.%d", layout.majorRevision, layout.minorRevision);
}

Opened openFile(ProcessRecord* record, SegyFormat format, const SegySourceParams& params) {
  char path[4096];
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) {
    say(record, "  *** There is no input file.");
    return {};
  }
  std::string reason;
  auto source = SegyFileSource::open(path, std::move(format), params, warner(record), &reason);
  if (source == nullptr) {
    say(record, formatText("  *** Error reading %s as SEG Y: %s.", path, reason.c_str()));
    return {};
  }
  if (params.survey)
    for (const std::string& line : source->surveyRecords()) say(record, line);
  Opened opened;
  opened.input.told = toldOf(source->layout());
  opened.source = std::move(source);
  return opened;
}

Opened openTape(ProcessRecord* record, SegyFormat format, const SegySourceParams& params, const KyrTapeCounts& counts) {
  std::string reason;
  auto source = SegyTapeSource::open(record, std::move(format), params, warner(record), &reason);
  if (source == nullptr) {
    if (!reason.empty()) say(record, formatText("  *** Error reading the input tape as SEG Y: %s.", reason.c_str()));
    return {};
  }
  Opened opened;
  opened.input.told = toldOf(source->layout());
  announceTape(counts, &opened.input);
  opened.input.tapeFiles = [tape = source.get()] { return tape->files(); };
  opened.source = std::move(source);
  return opened;
}

Opened openInput(ProcessRecord* record, const KyrSegyInput& how) {
  SegyFormat format;
  const auto tell = [record](const std::string& line) { say(record, line); };
  if (!loadChosenSegyFormat(fieldText(how.description), kReadingDescription, &format, tell)) return {};
  const SegySourceParams params = paramsOf(record, how);
  return kyrIsTape(record, KYR_INPUT) == 1 ? openTape(record, std::move(format), params, how.tape)
                                           : openFile(record, std::move(format), params);
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, KYR_NAME_SEGY);
  *uniqueId = KYR_ID_SEGY;
}

void AllocInputMemory(int* size) { *size = sizeof(KyrSegyInput); }
void AllocOutputMemory(int* size) { *size = sizeof(KyrSegyOutput); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  auto* const how = beginBlock<KyrSegyInput>(params, KYR_SEGY_INPUT);
  copyText(how->recordField, SegyRecordRule().field);
  how->tape.records = KYR_MOST_RECORDS;
  *paramDlg = 1;
  *disk = 1;
  *tape = 1;
}

void GetOutputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  auto* const how = beginBlock<KyrSegyOutput>(params, KYR_SEGY_OUTPUT);
  how->sampleFormat = 5;
  how->deadTraces = 1;
  *paramDlg = 1;
  *disk = 1;
  *tape = 1;
}

void PostInputDialog(int* params) {
  const auto* const record = reinterpret_cast<const KyrSegyInputRecord*>(params);
  editSegyInput(reinterpret_cast<KyrSegyInput*>(record->inputParams));
}

void PostOutputDialog(int* params) {
  const auto* const record = reinterpret_cast<const KyrSegyOutputRecord*>(params);
  editSegyOutput(reinterpret_cast<KyrSegyOutput*>(record->outputParams));
}

int TOpenSource(ProcessRecord* record, int* inputParams) {
  Opened opened = openInput(record, *reinterpret_cast<const KyrSegyInput*>(inputParams));
  return opened.source == nullptr ? 1 : RegisterSource(record, 0, std::move(opened.source));
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  Opened opened = openInput(record, *reinterpret_cast<const KyrSegyInput*>(inputParams));
  if (opened.source == nullptr) return 1;
  SetNumberOfInputs(record, 1);
  if (RegisterSource(record, 0, std::move(opened.source)) != kyrOk ||
      NewInputFile(&opened.input.link, record, "", 0, kAnySeismicType) != kyrOk) {
    say(record, "  *** The input has more records, traces or samples than can be read.");
    return 1;
  }
  theRun = std::make_unique<ReformatRun>(record, outputParams, std::move(opened.input));
  return theRun->begin();
}

int TMainPhase(ProcessRecord* /*record*/) { return theRun ? theRun->work() : 1; }

int TFinalPhase(ProcessRecord* /*record*/) { return theRun ? theRun->end() : 1; }
