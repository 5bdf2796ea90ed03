/// SEG Y. As input, files on disk through a source of their traces; as output format the choices of how it is written:
/// the module that reads writes it, through the run of all reformats.
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
  if (how.fieldFiles.hasLimits != 0 || how.fieldFiles.leftOutCount > 0)
    params.skips = [record, files = fieldFileChoice(how.fieldFiles)](int fieldFile) {
      return skipThisFile(record, &files, fieldFile) != 0;
    };
  return params;
}

/// Opens the input's file. @return null after a line
std::unique_ptr<SegyFileSource> openSource(ProcessRecord* record, const KyrSegyInput& how) {
  const auto say = [record](const std::string& line) { kyrSay(record, line.c_str()); };
  char path[4096];
  if (kyrIsTape(record, KYR_INPUT) == 1) {
    say("  *** SEG Y is read from disk files only.");
    return nullptr;
  }
  if (kyrPath(record, KYR_INPUT, path, sizeof path) != 0) {
    say("  *** There is no input file.");
    return nullptr;
  }
  SegyFormat format;
  if (!loadChosenSegyFormat(fieldText(how.description), kReadingDescription, &format, say)) return nullptr;
  std::string reason;
  const auto warn = [say](const std::string& line) { say(line.starts_with("  *") ? line : "  ** " + line); };
  auto source = SegyFileSource::open(path, std::move(format), paramsOf(record, how), warn, &reason);
  if (source == nullptr) say(formatText("  *** Error reading %s as SEG Y: %s.", path, reason.c_str()));
  return source;
}

std::string toldOf(const SegyLayout& layout) {
  return formatText("SEG Y REVISION %d.%d", layout.majorRevision, layout.minorRevision);
}

}  // namespace

void GetTuDllIdentifier(char* theName, int* uniqueId) {
  copyText(theName, KYR_NAME_SIZE, KYR_NAME_SEGY);
  *uniqueId = KYR_ID_SEGY;
}

void AllocInputMemory(int* size) { *size = sizeof(KyrSegyInput); }
void AllocOutputMemory(int* size) { *size = sizeof(KyrSegyOutput); }

void GetInputDefaultParameters(int* params, int* paramDlg, int* disk, int* tape) {
  copyText(beginBlock<KyrSegyInput>(params, KYR_SEGY_INPUT)->recordField, SegyRecordRule().field);
  *paramDlg = 1;
  *disk = 1;
  *tape = 0;
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
  auto source = openSource(record, *reinterpret_cast<const KyrSegyInput*>(inputParams));
  return source == nullptr ? 1 : RegisterSource(record, 0, std::move(source));
}

int TInitialPhase(ProcessRecord* record, int* inputParams, int* outputParams) {
  auto source = openSource(record, *reinterpret_cast<const KyrSegyInput*>(inputParams));
  if (source == nullptr) return 1;
  ReformatInput input;
  input.told = toldOf(source->layout());
  if (record->diskFileOutputType == OUTPUT_CHECK)
    for (const std::string& line : source->surveyRecords()) kyrSay(record, line.c_str());
  SetNumberOfInputs(record, 1);
  if (RegisterSource(record, 0, std::move(source)) != kyrOk ||
      NewInputFile(&input.link, record, "", 0, kAnySeismicType) != kyrOk) {
    kyrSay(record, "  *** The input has more records, traces or samples than can be read.");
    return 1;
  }
  theRun = std::make_unique<ReformatRun>(record, outputParams, std::move(input));
  return theRun->begin();
}

int TMainPhase(ProcessRecord* /*record*/) { return theRun ? theRun->work() : 1; }

int TFinalPhase(ProcessRecord* /*record*/) { return theRun ? theRun->end() : 1; }
