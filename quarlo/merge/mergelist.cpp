#include "quarlo/merge/mergelist.h"

#include <algorithm>

#include "libkyr/files.h"
#include "libkyr/nullvalue.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/diskunit.h"

wxFileArray InputList;
FILE_SPEC outFile{};
bool overrideOutputType = false;
int typeIndex = 0;

const MergeType theTypes[3] = {
    {"Unstacked", kAnySeismicType}, {"2D Stack", kStackedData}, {"3D Stack", brickedTimeStack}};

namespace {

const char* typeName(int type) {
  for (const MergeType& known : theTypes)
    if (known.type == type) return known.name;
  return "Mixed";
}

std::string intervalText(float seconds) {
  return IsValueNull(seconds) ? "?" : formatText("%.6g ms", static_cast<double>(seconds) * 1e3);
}

std::string rowOf(const KyrFile& file) {
  const std::string name(fieldText(file.fs.name));
  if (file.seismicFileType == 0) return formatText("%-30s cannot be opened as a dataset", name.c_str());
  const std::string counts =
      formatText("%d x %d x %d", file.numberOfRecords, file.tracesPerRecord, file.numberOfSamples);
  return formatText("%-30s %-9s %20s %10s", name.c_str(), typeName(file.seismicFileType), counts.c_str(),
                    intervalText(file.sampleInterval).c_str());
}

}  // namespace

bool isDuplicate(const KyrFile* inputFile) {
  const std::string out = pathOf(outFile);
  const std::string& path = inputFile != nullptr ? inputFile->fullFileName : out;
  return (inputFile != nullptr && sameFile(path.c_str(), out.c_str())) ||
         std::ranges::any_of(InputList,
                             [&](const auto& listed) { return sameFile(path.c_str(), listed->fullFileName.c_str()); });
}

/// What is wrong with the file is told by the merge, not by a look at it.
std::unique_ptr<KyrFile> newKyrFile(const FILE_SPEC& file) {
  auto entry = std::make_unique<KyrFile>();
  entry->fs = file;
  entry->fullFileName = pathOf(file);
  const ProcessRecordPtr record(NewProcessRecord());
  if (!record) return entry;
  record->consoleLine = [](const char*) {};
  SetNumberOfInputs(record.get(), 1);
  Link link;
  if (NewInputFile(&link, record.get(), entry->fullFileName.c_str(), 0, kAnySeismicType) == kyrOk)
    readFacts(record.get(), link, entry.get());
  return entry;
}

void readFacts(const ProcessRecord* record, Link link, KyrFile* file) {
  const auto count = [&](int property, int* value) {
    GetDatasetProperty(record, link, property, longIntType, gUnknownUnits, value);
  };
  file->seismicFileType = GetInSeismicType(record, link);
  count(dsRecords, &file->numberOfRecords);
  count(dsTracesPerRecord, &file->tracesPerRecord);
  count(dsSamples, &file->numberOfSamples);
  GetDatasetProperty(record, link, dsSampleInterval, singleFloatType, gUnknownUnits, &file->sampleInterval);
}

void updateList(WINDOW theList) {
  if (!xvt_vobj_is_valid(theList)) return;
  xvt_list_clear(theList);
  for (const auto& file : InputList) xvt_list_add(theList, -1, rowOf(*file).c_str());
}
