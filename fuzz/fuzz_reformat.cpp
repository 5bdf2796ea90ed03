// A whole reformat of a damaged file: SEG Y, SEG D or a dataset to a dataset, and that to SEG Y. The first bytes choose
// the format and where a sound file is damaged; what is behind them goes there, or is the file. Whatever comes of it:
// the run ends and says so, and a dataset that it made to its end is whole.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/segd_recording.h"
#include "fuzz/whole_job.h"
#include "libkyr/datasets.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/formats/segyformat_file.h"
#include "quarlo/tapelib/frame/reformatloop.h"
#include "quarlo/tapelib/frame/segdsource.h"
#include "quarlo/tapelib/frame/segysource.h"
#include "tests/support/segy_files.h"

namespace {

constexpr const char* kDataset = "in.kyr";
constexpr const char* kMade = "out/out.kyr";

std::unique_ptr<ProcessRecord, void (*)(ProcessRecord*)> newRecord() {
  std::unique_ptr<ProcessRecord, void (*)(ProcessRecord*)> record(NewProcessRecord(), FreeProcessRecord);
  SetDevUnit(record.get(), getDevPtr());
  return record;
}

std::unique_ptr<TraceSource> segySource() {
  SegyFormat format;
  std::string reason;
  const auto say = [](const std::string& line) { console_out(line.c_str()); };
  if (!loadChosenSegyFormat(QUARLO_FORMATS "/segy-rev2.txt", "", &format, say)) std::abort();
  return SegyFileSource::open("in", std::move(format), {}, say, &reason);
}

std::unique_ptr<TraceSource> segdSource(ProcessRecord* record) {
  auto source = std::make_unique<SegdSource>(record, KyrSegdInput{});
  return source->open("in") == 0 ? std::move(source) : nullptr;
}

/// @return the answer of the last phase; JOB_FAILED without a source
int run(int kind, const char* path, int type, const char* to) {
  const auto record = newRecord();
  record->diskFileOutputType = type;
  UnitStruct* const units = getDevPtr();
  units[1].type = UT_DISK;
  units[1].fs = fileSpecOf(to);
  if (kind < 2) {
    auto source = kind == 0 ? segySource() : segdSource(record.get());
    if (!source || RegisterSource(record.get(), 0, std::move(source)) != kyrOk) return JOB_FAILED;
  }
  ReformatInput input;
  SetNumberOfInputs(record.get(), 1);
  if (NewInputFile(&input.link, record.get(), path, 0, kAnySeismicType) != kyrOk) return JOB_FAILED;
  KyrSegyOutput segy{};
  segy.head = {KYR_SEGY_OUTPUT, sizeof segy, KYR_BLOCK_VERSION};
  copyText(segy.description, QUARLO_FORMATS "/segy-rev1.txt");
  segy.sampleFormat = 5;
  segy.deadTraces = 1;
  const KyrDatasetOutput dataset{{KYR_DATASET_OUTPUT, sizeof dataset, KYR_BLOCK_VERSION}};
  const void* const block = type == KYR_ID_SEGY ? static_cast<const void*>(&segy) : &dataset;
  ReformatRun phases(record.get(), static_cast<const int*>(block), std::move(input));
  int answer = phases.begin();
  if (answer == 0) answer = phases.work();
  if (answer == 0) answer = phases.end();
  closeDiskUnit(&units[1]);
  return answer;
}

/// Every trace of the dataset that was made can be read.
void requireWhole() {
  const auto record = newRecord();
  SetNumberOfInputs(record.get(), 1);
  Link link;
  require(NewInputFile(&link, record.get(), kMade, 0, kAnySeismicType) == kyrOk);
  int records = 0;
  int traces = 0;
  int samples = 0;
  GetDatasetProperty(record.get(), link, dsRecords, longIntType, gUnknownUnits, &records);
  GetDatasetProperty(record.get(), link, dsTracesPerRecord, longIntType, gUnknownUnits, &traces);
  GetDatasetProperty(record.get(), link, dsSamples, longIntType, gUnknownUnits, &samples);
  std::vector<float> values(static_cast<std::size_t>(samples));
  TraceInfo header;
  for (int place = 0; place < records * traces; ++place)
    require(TraceGet(record.get(), link, place / traces + 1, place % traces + 1, values.data(), &header) == kyrOk);
}

std::string soundFile(int kind, const std::string& choices) {
  if (kind == 1) {
    const std::vector<char> file = segdRecording({choices.begin(), choices.end()});
    return {file.begin(), file.end()};
  }
  std::string file = segyText() + segyBinary(5);
  for (int i = 0; i < 6; ++i) file += segyTrace({7 - i / 2, i % 2, 0, 0}, 5, i);
  if (kind == 0) return file;
  makeFile("in", file);
  require(run(0, "", KYR_ID_DATASET, kDataset) == JOB_OK);
  return contents(kDataset);
}

std::string damaged(std::string file, const std::uint8_t* choice, const std::string& damage) {
  const std::size_t place = (choice[1] | std::size_t{choice[2]} << 8) % (file.size() + 1);
  if ((choice[3] & 1) != 0) return damage;
  if ((choice[3] & 2) != 0) return file.substr(0, place);
  return file.replace(place, std::min<std::size_t>(damage.size(), choice[3] / 4 % 16), damage, 0, choice[3] / 4 % 16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const Program program;
  constexpr std::size_t kChoices = 4;
  if (size < kChoices) return 0;
  const int kind = bytes[0] % 3;
  const std::string rest(bytes + kChoices, bytes + size);
  const std::string file = damaged(soundFile(kind, rest), bytes, rest);
  const char* const input = kind == 2 ? kDataset : "in";
  makeFile(input, file);
  for (const char* made : {kMade, "out/out.sgy"}) std::filesystem::remove(made);
  const int result = run(kind, input, KYR_ID_DATASET, kMade);
  require(result == JOB_OK || result == JOB_FAILED);
  if (result != JOB_OK) return 0;
  requireWhole();
  require(run(2, kMade, KYR_ID_SEGY, "out/out.sgy") == JOB_OK);
  return 0;
}
