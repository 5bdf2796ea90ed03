#include "quarlo/index/indexjob.h"

#include <limits>
#include <memory>
#include <new>

#include "libkyr/datasets.h"
#include "libkyr/files.h"
#include "libkyr/nullcheck.h"
#include "libkyr/text.h"
#include "quarlo/common/tprcstep.h"
#include "quarlo/index/indexwriter.h"
#include "quarlo/index/scansummary.h"
#include "quarlo/index/tracetable.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/dialogs/prog_dlg.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/jobframe.h"
#include "quarlo/tapelib/frame/loglines.h"

IndexRequest indexRequest;

namespace {

/// Beside the input. The separator is a backslash everywhere: programs look for this very name.
std::string indexPath(const FILE_SPEC& input) {
  return std::string(fieldText(input.dir.path)) + "\\" + std::string(fieldText(input.name)) + ".idx";
}

class Scan {
 public:
  Scan(ProcessRecord* record, const UnitStruct* units, bool tellsBytes)
      : record_(record), units_(units), tellsBytes_(tellsBytes) {}
  bool run(int* inputParams);

 private:
  bool openInput(int* inputParams);
  /// By links a file has many names.
  bool isInput(const std::string& path) const;
  bool beginOutputs();
  std::unique_ptr<IndexFile> newHeader() const;
  bool scanAll(JobFrame* frame);
  bool takeTrace(int record, int trace);
  bool finish();

  ProcessRecord* record_;
  const UnitStruct* units_;
  bool tellsBytes_;  // of the traces, in the table
  const std::string indexPath_ = indexPath(units_->fs);
  Link link_{};
  GeneralSeisDataOrg org_{};
  SourceFormat format_{};
  SeisCounts counts_{};
  IndexWriter index_;
  TraceTable table_;
  ScanSummary summary_;
  TraceInfo header_{};
  bool hasTable_ = !indexRequest.tablePath.empty();
  std::int64_t unreadable_ = 0;
  int recordsDone_ = 0;
  int percent_ = 0;
  int tracesDone_ = 0;
};

bool Scan::run(int* inputParams) {
  if (!openInput(inputParams)) return false;
  JobFrame frame(JOB_SCAN, UT_DISK, &recordsDone_, &percent_, &tracesDone_);
  return frame.isOpen() && beginOutputs() && scanAll(&frame) && finish();
}

bool Scan::openInput(int* inputParams) {
  SetNumberOfInputs(record_, 1);
  SetNumberOfOutputs(record_, 1);
  const std::string path = pathOf(units_->fs);
  if (!indexRequest.module.empty() && openSource(indexRequest.module.c_str(), record_, inputParams) != 0) return false;
  const int opened = NewInputFile(&link_, record_, path.c_str(), 0, kAnySeismicType);
  if (opened != kyrOk || EndInit(record_) != kyrOk) {
    console_printf("  *** Error: %s cannot be opened as input (%d).", path.c_str(), opened);
    return false;
  }
  GetSeisOrg(record_, link_, &org_);
  GetSourceFormat(record_, link_, &format_);
  counts_ = seisOrgCounts(org_);
  if (counts_.records >= 0) return true;
  console_out("  *** Error: the file scan needs an input that knows its records.");
  return false;
}

std::unique_ptr<IndexFile> Scan::newHeader() const {
  std::unique_ptr<IndexFile> header(new (std::nothrow) IndexFile{});
  if (!NullCheck(header.get(), "kyrIn")) return nullptr;
  header->fileTypeNumber = units_->type;
  header->indexFileVersionNumber = 1;
  header->numberOfInputFiles = 1;
  header->numberOfIndexFiles = 1;
  header->numberOfKeys = 7;
  copyText(header->formatFile, format_.description);
  header->gSeisOrg = org_;
  header->sampleFormat = format_.sampleFormat;
  header->bytesPerSample = format_.bytesPerSample;
  header->byteOffsetToIndexArrays = kIndexHeaderSize;
  copyText(header->files[0].fileDirectory, fieldText(units_[1].fs.dir.path));
  copyText(header->files[0].fileName, fieldText(units_->fs.name));
  return header;
}

bool Scan::isInput(const std::string& path) const {
  return UsesFile(record_, link_, path.c_str()) || sameFile(path.c_str(), pathOf(units_->fs).c_str());
}

bool Scan::beginOutputs() {
  const std::string& table = indexRequest.tablePath;
  if (isInput(indexPath_)) {
    console_printf("  *** Error: the index file %s is the input.", indexPath_.c_str());
    return false;
  }
  if (hasTable_ && (isInput(table) || sameFile(table.c_str(), indexPath_.c_str()))) {
    console_printf("  *** Error: the trace table %s is the input or the index file.", table.c_str());
    return false;
  }
  auto header = newHeader();
  return header && index_.begin(indexPath_, std::move(header)) && (!hasTable_ || table_.begin(table));
}

bool Scan::scanAll(JobFrame* frame) {
  for (int record = 1; record <= counts_.records; ++record) {
    for (int trace = 1; trace <= counts_.tracesPerRecord; ++trace) {
      if (!frame->goOn()) {
        logAborted("Reformat");
        return false;
      }
      if (!takeTrace(record, trace)) return false;
      if (tracesDone_ < std::numeric_limits<int>::max()) ++tracesDone_;
    }
    recordsDone_ = record;
  }
  return true;
}

bool Scan::takeTrace(int record, int trace) {
  const int result = HeaderGet(record_, link_, record, trace, &header_);
  if (result == kyrSourceEnded) return false;
  if (result != kyrOk) ++unreadable_;
  summary_.take(header_);
  if (hasTable_) {
    const std::int64_t place = tellsBytes_ ? GetTracePosition(record_, link_, record, trace) : -1;
    if (!table_.take(record, trace, header_, place)) return false;
  }
  if (IsDead(header_)) return true;
  if (!index_.take(record, trace, header_)) return false;
  const double total = static_cast<double>(counts_.records) * counts_.tracesPerRecord;
  percent_ = static_cast<int>(100.0 * index_.count() / total);
  return true;
}

bool Scan::finish() {
  if (!index_.finish() || (hasTable_ && !table_.finish())) return false;
  const std::int64_t places = std::int64_t{counts_.records} * counts_.tracesPerRecord;
  logBlank();
  console_printf("File scan of %s:", pathOf(units_->fs).c_str());
  summary_.tell(counts_.records, places);
  if (unreadable_ > 0)
    console_printf("  *** %lld trace%s could not be read.", static_cast<long long>(unreadable_), plural(unreadable_));
  console_printf("The index file %s has %d entr%s.", indexPath_.c_str(), index_.count(),
                 index_.count() == 1 ? "y" : "ies");
  logBlank();
  return unreadable_ == 0;
}

int scan(ProcessRecord* procRecord, int* inputParams, bool tellsBytes) {
  const UnitStruct* const units = getDevPtr();
  if (units->type != UT_DISK) {
    console_out("  *** Error: the file scan reads disk files only.");
    tellUser("The file scan reads disk files only.");
    return -1;
  }
  setConsole(procRecord);
  SetDevUnit(procRecord, getDevPtr());
  bool done = false;
  if (!runGuarded([&] { done = Scan(procRecord, units, tellsBytes).run(inputParams); })) done = false;
  CloseAllFiles(procRecord);
  return done ? 0 : -1;
}

}  // namespace

int fileIndexSEGY(ProcessRecord* procRecord, int* inputParams) { return scan(procRecord, inputParams, true); }
int fileIndexKYR(ProcessRecord* procRecord, int* inputParams) { return scan(procRecord, inputParams, false); }
