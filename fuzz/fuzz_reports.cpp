// All ten reports, through the file dump and their dialogs, the file scan and the merge, on a dataset of any samples,
// kill flags and counts, then on the same with damaged bytes. Whatever comes of it: every run ends, the dialog closes
// and the dataset goes back; the index has an entry and the table a line for each trace that there is.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/whole_job.h"
#include "libkyr/datasets.h"
#include "quarlo/dump/fdmp_dlg.h"
#include "quarlo/index/indexfile.h"
#include "quarlo/index/indexjob.h"
#include "quarlo/merge/mergejob.h"
#include "quarlo/merge/mergelist.h"
#include "quarlo/tapelib/diskunit.h"
#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr const char* kDataset = "in.kyr";

constexpr struct {
  const char* row;
  int resource;
} kReports[] = {
    {"Trace Kills Report", DLG_KILLS_REPORT},
    {"A/D Converter Test", DLG_AD_TEST},
    {"Crossfeed Test", DLG_CROSSFEED_TEST},
    {"THD Test", DLG_DISTORTION_TEST},
    {"EIN Test", DLG_NOISE_TEST},
    {"DC Offset Test", DLG_DC_OFFSET_TEST},
    {"Dynamic Range Test", DLG_DYNAMIC_RANGE_TEST},
    {"Impulse Resp. Test", DLG_IMPULSE_TEST},
    {"Gain Accuracy Test", DLG_GAIN_ACCURACY_TEST},
    {"Gain Step Test", DLG_GAIN_STEP_TEST},
};

/// The fuzzer's bytes, again from their beginning when they have been used up.
class Source {
 public:
  Source(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes, bytes + size) {}
  std::uint8_t byte() { return bytes_[at_++ % bytes_.size()]; }
  float sample() {
    std::array<std::uint8_t, 4> word{};
    std::ranges::generate(word, [this] { return byte(); });
    float value = 0;
    std::memcpy(&value, word.data(), sizeof value);
    return value;
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::size_t at_ = 0;
};

void set(ProcessRecord* record, Link link, int property, int value) {
  SetDatasetProperty(record, link, property, longIntType, gUnknownUnits, &value);
}

TraceInfo headerOf(int record, Source* source) {
  TraceInfo header{};
  const int fieldFile = 900 + record;
  const int kill = source->byte() % 5 == 0 ? source->byte() : 0;
  SetTraceProperty(trFieldFile, longIntType, gUnknownUnits, &fieldFile, &header);
  SetTraceProperty(trKillFlag, longIntType, gUnknownUnits, &kill, &header);
  header.words[source->byte() % header.words.size()] = source->byte() * 0x01010101U;
  return header;
}

void makeDataset(Source* source) {
  std::filesystem::remove(kDataset);
  const ProcessRecordPtr process(NewProcessRecord());
  const int records = source->byte() % 4;
  const int traces = source->byte() % 6;
  const int samples = source->byte() % 40;
  const float interval = source->byte() % 3 == 0 ? source->sample() : 0.002F;
  Link link;
  SetNumberOfOutputs(process.get(), 1);
  require(NewOutputSeismicFile(&link, process.get(), kDataset, 0, kAnySeismicType, 0, traces) == kyrOk);
  set(process.get(), link, dsRecords, records);
  set(process.get(), link, dsSamples, samples);
  SetDatasetProperty(process.get(), link, dsSampleInterval, singleFloatType, gSecondsUnits, &interval);
  require(EndInit(process.get()) == kyrOk);
  std::vector<float> trace(static_cast<std::size_t>(samples));
  for (int place = 0; place < records * traces; ++place) {
    std::ranges::generate(trace, [source] { return source->sample(); });
    const TraceInfo header = headerOf(place / traces + 1, source);
    if (source->byte() % 7 != 0)
      TracePut(process.get(), link, place / traces + 1, place % traces + 1, trace.data(), &header);
  }
  CloseFile(process.get(), link);
}

void damage(Source* source) {
  std::string file = contents(kDataset);
  for (int times = source->byte() % 4; times > 0 && !file.empty(); --times)
    file[(source->byte() * 256U + source->byte()) % file.size()] = static_cast<char>(source->byte());
  if (source->byte() % 3 == 0) file.resize((source->byte() * 256U + source->byte()) % (file.size() + 1));
  makeFile(kDataset, file);
}

void runAll(Program* program) {
  TestToolkit& toolkit = program->toolkit;
  const WINDOW dump = xvt_dlg_create_res(WD_MODELESS, DLG_FILE_DUMP, FileDumpDlg_eh, 0);
  require(dump != NULL_WIN);
  toolkit.answerFile(program->folder + "/" + kDataset);
  toolkit.press(dump, FD_OPEN);
  for (const auto& [row, resource] : kReports) {
    toolkit.select(dump, FD_REPORTS, row);
    toolkit.press(dump, FD_START_REPORT);
    const WINDOW report = toolkit.dialog(resource);
    require(report != NULL_WIN);
    for (int times = 0; times < 2; ++times) toolkit.press(report, IT_RUN);
    toolkit.close(report);
    require(!xvt_vobj_is_valid(report) && toolkit.text(dump, FD_FILE).ends_with(kDataset));
  }
  toolkit.close(dump);
  require(!xvt_vobj_is_valid(dump) && toolkit.failures.empty());
  toolkit.errors.clear();
}

void scan(const Program& program) {
  const FILE_SPEC file = fileSpecOf(program.folder + "/out/" + kDataset);
  std::filesystem::copy_file(kDataset, pathOf(file), std::filesystem::copy_options::overwrite_existing);
  indexRequest = {"", program.folder + "/table.csv"};
  require(openDiskUnit(getDevPtr(), file, "rb"));
  const ProcessRecordPtr process(NewProcessRecord());
  const int result = fileIndexKYR(process.get(), nullptr);
  require(result == 0 || result == -1);
  closeDiskUnit(getDevPtr());
  const auto index = std::make_unique<IndexFile>();
  std::ifstream(program.folder + "/out\\" + kDataset + ".idx", std::ios::binary)
      .read(reinterpret_cast<char*>(index.get()), sizeof *index);
  const std::string table = contents("table.csv");
  require(result != 0 || (index->keyEntries >= 0 && index->keyEntries <= std::ranges::count(table, '\n') - 1));
}

void merge(const Program& program) {
  InputList.clear();
  outFile = fileSpecOf(program.folder + "/out.kyr");
  std::filesystem::remove("out.kyr");
  for (const char* name : {"in.kyr", "out/in.kyr"})
    InputList.push_back(newKyrFile(fileSpecOf(program.folder + "/" + name)));
  const int result = doKyrMerge(NULL_WIN);
  require(result == 0 || InputList.empty() || newKyrFile(outFile)->seismicFileType != 0);
  InputList.clear();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Program program;
  if (size == 0) return 0;
  Source source(data, size);
  makeDataset(&source);
  for (const bool damaged : {false, true}) {
    if (damaged) damage(&source);
    runAll(&program);
    scan(program);
    merge(program);
    program.toolkit.errors.clear();
  }
  return 0;
}
