#include "libkyr/streamsource.h"

#include <algorithm>

int StreamSource::fetch(int record, int trace, float* samples, TraceInfo* header) {
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  const Place wanted{record, trace};
  if (wanted < asked_) return kyrTooLate;
  asked_ = wanted;
  advanceTo(wanted);
  if (!ended_ && at_ == wanted) return result_ == kyrOk ? give(samples, header) : result_;
  if (ended_ && (result_ != kyrNoSuchTrace || record > at_.first)) return result_;
  makeDead(seisOrgCounts(org()).samples, samples, header, killNeverWritten);
  return kyrOk;
}

/// Takes traces up to the first one that does not stand before a place.
void StreamSource::advanceTo(Place wanted) {
  while (!ended_ && at_ < wanted) {
    result_ = advance();
    ended_ = result_ != kyrOk && result_ != kyrTraceLost && result_ != kyrDiskError;
  }
}

int StreamSource::placeFrom(int record, int trace) {
  // What is thrown is lost to who reads.
  try {
    advanceTo({record, trace});
  } catch (...) {
    thrown_ = std::current_exception();
    return trace;
  }
  if (ended_) return result_ == kyrNoSuchTrace && record <= at_.first ? 0 : trace;
  return at_.first == record ? at_.second : 0;
}

/// Takes the next trace. @return as next()
int StreamSource::advance() {
  const SeisCounts counts = seisOrgCounts(org());
  const int result = next(&now_);
  if (result != kyrOk && result != kyrTraceLost && result != kyrDiskError) return result;
  const Place came{now_.record, now_.trace};
  const bool fits = came > at_ && now_.trace >= 1 && now_.trace <= counts.tracesPerRecord &&
                    (counts.records < 0 || now_.record <= counts.records);
  if (!fits) return kyrSourceEnded;
  at_ = came;
  return result;
}

int StreamSource::give(float* samples, TraceInfo* header) const {
  const auto count = static_cast<std::size_t>(seisOrgCounts(org()).samples);
  if (now_.samples.size() != count) return kyrTraceLost;
  *header = now_.header;
  if (samples != nullptr) std::copy_n(now_.samples.data(), count, samples);
  return kyrOk;
}
