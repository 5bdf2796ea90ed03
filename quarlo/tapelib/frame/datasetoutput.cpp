#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"
#include "quarlo/tapelib/frame/outputkinds.h"

namespace {

class DatasetOutput : public TraceOutput {
 public:
  explicit DatasetOutput(ProcessRecord* procRecord) : record_(procRecord) {}
  ~DatasetOutput() override {
    if (IsLinkValid(link_)) CloseFile(record_, link_);
  }

  bool begin(const TraceCounts& counts, Link from) override;
  TracePutAnswer put(int record, int trace, const float* samples, const TraceInfo& header) override;
  bool finish(JobEnd end, int records, int largest) override;
  std::int64_t lost() const override { return lost_; }

 private:
  bool failed(int result, const char* what);
  int setCount(int code, int value) {
    return SetDatasetProperty(record_, link_, code, longIntType, gUnknownUnits, &value);
  }

  ProcessRecord* record_;
  Link link_{};
  std::int64_t lost_ = 0;
};

bool DatasetOutput::failed(int result, const char* what) {
  if (result == kyrOk) return false;
  ProcessConsole(record_, formatText("  *** Error %s the output dataset (%d).", what, result).c_str());
  return true;
}

bool DatasetOutput::begin(const TraceCounts& counts, Link from) {
  const UnitStruct& unit = GetDevUnit(record_)[1];
  const int type = GetInSeismicType(record_, from);
  SetNumberOfOutputs(record_, 1);
  const int opened = NewOutputSeismicFile(
      &link_, record_, pathOf(unit.fs).c_str(), 0, type != 0 ? type : int{kAnyUnknownSeismic},
      GetRecordsPerFile(counts.records, counts.tracesPerRecord, counts.samples), counts.tracesPerRecord);
  if (failed(opened, "opening") || failed(CopyBinaryHeader(record_, from, link_), "preparing")) return false;
  const auto interval = static_cast<float>(counts.interval);
  int result = setCount(dsRecords, counts.records);
  if (result == kyrOk) result = setCount(dsTracesPerRecord, counts.tracesPerRecord);
  if (result == kyrOk) result = setCount(dsSamples, counts.samples);
  if (result == kyrOk)
    result = SetDatasetProperty(record_, link_, dsSampleInterval, singleFloatType, gSecondsUnits, &interval);
  if (result == kyrOk) result = EndInit(record_);
  return !failed(result, "preparing");
}

TracePutAnswer DatasetOutput::put(int record, int trace, const float* samples, const TraceInfo& header) {
  const int result = TracePut(record_, link_, record, trace, samples, &header);
  return failed(result, "writing to") ? TracePutAnswer::Failed : TracePutAnswer::Written;
}

bool DatasetOutput::finish(JobEnd end, int records, int largest) {
  if (!IsLinkValid(link_)) return true;
  lost_ = SettleTraces(record_, link_);
  setCount(dsRecords, records);
  if (end == JobEnd::Success) setCount(dsTracesPerRecord, largest);
  const Link link = link_;
  link_ = {};
  return !failed(end == JobEnd::Success ? CloseFile(record_, link) : CloseUnfinished(record_, link), "closing");
}

}  // namespace

std::unique_ptr<TraceOutput> makeDatasetOutput(ProcessRecord* procRecord) {
  return std::make_unique<DatasetOutput>(procRecord);
}
