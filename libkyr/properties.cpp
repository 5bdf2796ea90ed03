#include "libkyr/properties.h"

#include <algorithm>

#include "libkyr/link.h"
#include "libkyr/nullvalue.h"
#include "libkyr/propertyvalue.h"
#include "libkyr/seisorg.h"

namespace {

constexpr std::array kTraceTable{
    PropertyEntry{trCmpLine, "cmp-line", false, false},
    PropertyEntry{trCmpLocation, "cmp-location", true, false},
    PropertyEntry{trSourceLine, "source-line", false, false},
    PropertyEntry{trSourceLocation, "source-location", true, false},
    PropertyEntry{trReceiverLine, "receiver-line", false, false},
    PropertyEntry{trReceiverLocation, "receiver-location", true, false},
    PropertyEntry{trFieldFile, "field-file", false, false},
    PropertyEntry{trTraceNumber, "trace-number", false, false},
    PropertyEntry{trChannel, "channel", false, false},
    PropertyEntry{trKillFlag, "kill-flag", false, false},
    PropertyEntry{trTraceType, "trace-type", false, false},
    PropertyEntry{trOffset, "offset", true, false},
    PropertyEntry{trSourceX, "source-x", true, false},
    PropertyEntry{trSourceY, "source-y", true, false},
    PropertyEntry{trSourceElevation, "source-elevation", true, false},
    PropertyEntry{trReceiverX, "receiver-x", true, false},
    PropertyEntry{trReceiverY, "receiver-y", true, false},
    PropertyEntry{trReceiverElevation, "receiver-elevation", true, false},
};

constexpr std::array kDatasetTable{
    PropertyEntry{dsRecords, "records", false, false},
    PropertyEntry{dsTotalTraces, "total-traces", false, false},
    PropertyEntry{dsLargestRecord, "largest-record", false, false},
    PropertyEntry{dsTracesPerRecord, "traces-per-record", false, false},
    PropertyEntry{dsSamples, "samples", false, false},
    PropertyEntry{dsSampleInterval, "sample-interval", true, true},
    PropertyEntry{dsMinReceiverLocation, "min-receiver-location", false, false},
    PropertyEntry{dsMaxReceiverLocation, "max-receiver-location", false, false},
    PropertyEntry{dsMinOffset, "min-offset", true, false},
    PropertyEntry{dsMaxOffset, "max-offset", true, false},
    PropertyEntry{dsMinSourceLocation, "min-source-location", false, false},
    PropertyEntry{dsMaxSourceLocation, "max-source-location", false, false},
    PropertyEntry{dsMinCmpLocation, "min-cmp-location", false, false},
    PropertyEntry{dsMaxCmpLocation, "max-cmp-location", false, false},
    PropertyEntry{dsMinReceiverLine, "min-receiver-line", false, false},
    PropertyEntry{dsMaxReceiverLine, "max-receiver-line", false, false},
    PropertyEntry{dsMinSourceLine, "min-source-line", false, false},
    PropertyEntry{dsMaxSourceLine, "max-source-line", false, false},
    PropertyEntry{dsMinCmpLine, "min-cmp-line", false, false},
    PropertyEntry{dsMaxCmpLine, "max-cmp-line", false, false},
    PropertyEntry{dsMinFieldFile, "min-field-file", false, false},
    PropertyEntry{dsMaxFieldFile, "max-field-file", false, false},
};

constexpr int kFirstFreeInteger = 100;
constexpr int kFirstFreeFloat = 150;

std::optional<PropertyEntry> find(std::span<const PropertyEntry> table, int code, int count) {
  if (code >= kFirstFreeInteger && code < count) return PropertyEntry{code, nullptr, code >= kFirstFreeFloat, false};
  const auto found =
      std::find_if(table.begin(), table.end(), [code](const PropertyEntry& entry) { return entry.code == code; });
  return found == table.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

std::span<const PropertyEntry> tracePropertyTable() { return kTraceTable; }
std::span<const PropertyEntry> datasetPropertyTable() { return kDatasetTable; }

std::optional<PropertyEntry> traceProperty(int code) {
  return find(kTraceTable, code, static_cast<int>(kTraceHeaderWords));
}
std::optional<PropertyEntry> datasetProperty(int code) { return find(kDatasetTable, code, kDatasetPropertyCount); }

int GetTraceProperty(int property, int type, int units, void* value, const TraceInfo* header) {
  const auto entry = traceProperty(property);
  if (!entry || header == nullptr) return failedValue(type, value);
  return valueFromWord(*entry, header->words[static_cast<std::size_t>(property)], type, units, value);
}

int SetTraceProperty(int property, int type, int units, const void* value, TraceInfo* header) {
  const auto entry = traceProperty(property);
  if (!entry || header == nullptr) return kyrBadCall;
  const auto word = wordFromValue(*entry, type, units, value);
  if (!word) return kyrBadCall;
  header->words[static_cast<std::size_t>(property)] = *word;
  return kyrOk;
}

bool IsDead(const TraceInfo& header) {
  const auto flag = static_cast<std::int32_t>(header.words[trKillFlag]);
  return flag != 0 && !IsValueNull(flag);
}
