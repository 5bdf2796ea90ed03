#include "libkyr/source.h"

#include <algorithm>
#include <new>
#include <utility>

#include "libkyr/text.h"

namespace {

/// The answer to what came of a fetch.
int knownResult(int result) { return result > kyrOk || result < kyrSourceEnded ? int{kyrTraceLost} : result; }

bool has(const SeisCounts& counts, int record, int trace) {
  return record >= 1 && (record <= counts.records || counts.records < 0) && trace >= 1 &&
         trace <= counts.tracesPerRecord;
}

}  // namespace

std::string LostReads::rest(const std::string& path) {
  const long long count = std::exchange(count_, 0);
  return count > kNamed ? formatText("  *** %lld reads of traces of %s failed.", count, path.c_str()) : "";
}

int TraceSource::read(int record, int trace, float* samples, TraceInfo* header) {
  const SeisCounts counts = seisOrgCounts(org());
  int result = kyrNoSuchTrace;
  try {
    if (has(counts, record, trace)) result = knownResult(fetch(record, trace, samples, header));
  } catch (const std::bad_alloc&) {
    result = kyrNoMemory;
  } catch (...) {
    result = kyrTraceLost;
  }
  if (result != kyrOk) makeDead(counts.samples, samples, header, killUnreadable);
  return result;
}

void makeDead(int count, float* samples, TraceInfo* header, int flag) {
  *header = {};
  header->words[trKillFlag] = static_cast<std::uint32_t>(flag);
  if (samples != nullptr) std::fill_n(samples, count, 0.0F);
}
