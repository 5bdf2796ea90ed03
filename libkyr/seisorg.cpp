#include "libkyr/seisorg.h"

#include <algorithm>
#include <limits>

#include "libkyr/byteorder.h"
#include "libkyr/link.h"
#include "libkyr/properties.h"
#include "libkyr/propertyvalue.h"

namespace {

unsigned char* wordOf(GeneralSeisDataOrg* org, int property) { return org->bytes + seisOrgOffset(property); }

int countIn(const GeneralSeisDataOrg& org, int property) { return loadLeInt32(org.bytes + seisOrgOffset(property)); }

void setCount(GeneralSeisDataOrg* org, int property, int count) {
  storeLe32(wordOf(org, property), static_cast<std::uint32_t>(count));
}

}  // namespace

GeneralSeisDataOrg newSeisOrg() {
  GeneralSeisDataOrg org{};
  for (int property = 0; property < kDatasetPropertyCount; ++property)
    if (const auto entry = datasetProperty(property); entry && !isCountProperty(property))
      storeLe32(wordOf(&org, property), nullWord(*entry));
  return org;
}

SeisCounts seisOrgCounts(const GeneralSeisDataOrg& org) {
  return {countIn(org, dsRecords), countIn(org, dsTracesPerRecord), countIn(org, dsSamples)};
}

void setSeisOrgCounts(GeneralSeisDataOrg* org, const SeisCounts& counts) {
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  const std::int64_t total = std::int64_t{counts.records} * counts.tracesPerRecord;
  setCount(org, dsRecords, counts.records);
  setCount(org, dsTracesPerRecord, counts.tracesPerRecord);
  setCount(org, dsSamples, counts.samples);
  setCount(org, dsTotalTraces, counts.records < 0 ? -1 : static_cast<int>(std::min(total, kMost)));
  setCount(org, dsLargestRecord, counts.tracesPerRecord);
}

int SetDSProperty(int property, int type, int units, const void* value, GeneralSeisDataOrg* org) {
  const auto entry = datasetProperty(property);
  if (!entry || org == nullptr) return kyrBadCall;
  const auto word = wordFromValue(*entry, type, units, value);
  if (!word) return kyrBadCall;
  storeLe32(wordOf(org, property), *word);
  return kyrOk;
}

int GetDSProperty(int property, int type, int units, void* value, const GeneralSeisDataOrg* org) {
  const auto entry = datasetProperty(property);
  if (!entry || org == nullptr) return failedValue(type, value);
  return valueFromWord(*entry, loadLe32(org->bytes + seisOrgOffset(property)), type, units, value);
}
