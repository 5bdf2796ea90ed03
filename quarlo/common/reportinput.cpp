#include "quarlo/common/reportinput.h"

#include "libkyr/nullvalue.h"
#include "quarlo/tapelib/console.h"
#include "quarlo/tapelib/diskunit.h"

int wholeProperty(int property, const TraceInfo& header) {
  int value = 0;
  GetTraceProperty(property, longIntType, gUnknownUnits, &value, &header);
  return IsValueNull(value) ? 0 : value;
}

float realProperty(int property, const TraceInfo& header) {
  float value = 0;
  GetTraceProperty(property, singleFloatType, gUnknownUnits, &value, &header);
  return IsValueNull(value) ? 0.0F : value;
}

ReportInput::ReportInput(const FILE_SPEC& file) : path_(pathOf(file)) {
  isOpen_ = open();
  if (!isOpen_) xvt_dm_post_error("Error opening file %s for reading.", path_.c_str());
}

bool ReportInput::open() {
  if (!process_) return false;
  SetNumberOfInputs(process_.get(), 1);
  NewInputFile(&link_, process_.get(), path_.c_str(), 0, kAnySeismicType);
  return IsLinkValid(link_) && property(dsTracesPerRecord, longIntType, gUnknownUnits, &traces_) &&
         property(dsRecords, longIntType, gUnknownUnits, &records_) &&
         property(dsSamples, longIntType, gUnknownUnits, &samples_) &&
         property(dsSampleInterval, singleFloatType, gSecondsUnits, &interval_) && EndInit(process_.get()) == kyrOk;
}

float ReportInput::sampleInterval() const { return IsValueNull(interval_) ? 0.0F : interval_; }

bool ReportInput::property(int property, int type, int units, void* value) const {
  return GetDatasetProperty(process_.get(), link_, property, type, units, value) == kyrOk;
}

bool ReportInput::header(int record, int trace, TraceInfo* header) {
  return HeaderGet(process_.get(), link_, record, trace, header) == kyrOk;
}

bool ReportInput::headerCounted(int record, int trace, TraceInfo* header) {
  return count(HeaderGet(process_.get(), link_, record, trace, header), record, trace, *header);
}

bool ReportInput::traceCounted(int record, int trace, float* samples, TraceInfo* header) {
  return count(TraceGet(process_.get(), link_, record, trace, samples, header), record, trace, *header);
}

bool ReportInput::count(int result, int record, int trace, const TraceInfo& header) {
  const bool lost = result != kyrOk;
  const bool neverWritten = !lost && (wholeProperty(trKillFlag, header) & killNeverWritten) != 0;
  if ((lost || neverWritten) && lost_ + neverWritten_ == 0) {
    firstRecord_ = record;
    firstTrace_ = trace;
  }
  lost_ += lost ? 1 : 0;
  neverWritten_ += neverWritten ? 1 : 0;
  return !lost;
}

void ReportInput::tellMissing() const {
  if (lost_ + neverWritten_ == 0) return;
  console_printf("  ** Traces lost or damaged: %ld, never written: %ld. The first is trace %d of record %d.", lost_,
                 neverWritten_, firstTrace_, firstRecord_);
}
