/// A source over traces that come one after the other, as from a tape: read forward, by record and trace.
#pragma once

#include <exception>
#include <utility>
#include <vector>

#include "libkyr/source.h"

/// A trace as it comes.
struct StreamTrace {
  int record = 0;
  int trace = 0;
  TraceInfo header{};
  std::vector<float> samples{};  ///< as many as dataset property 8 says, but for a trace that is lost
};

/// The trace asked for last can be asked for again, one before it is answered with kyrTooLate. Places that the stream
/// passed over are traces that nobody wrote.
class StreamSource : public TraceSource {
 public:
  int placeFrom(int record, int trace) final;

 private:
  /// Fetches the next trace, which stands behind the one before it. Whoever implements it says why nothing can be read
  /// beyond the counts; a trace that comes from there all the same ends the source.
  /// @param next memory to fill again and again, as the last call left it
  /// @return kyrOk; kyrTraceLost or kyrDiskError for a trace that cannot be read, its place being known; kyrNoSuchTrace
  ///         at the end; anything else ends the source too
  virtual int next(StreamTrace* next) = 0;

  int fetch(int record, int trace, float* samples, TraceInfo* header) final;

  using Place = std::pair<int, int>;  // record, trace

  void advanceTo(Place wanted);
  int advance();
  int give(float* samples, TraceInfo* header) const;

  StreamTrace now_{};
  Place at_{};                   // of what came last
  Place asked_{};                // last
  int result_ = kyrOk;           // of what came last
  std::exception_ptr thrown_{};  // by a look ahead
  bool ended_ = false;           // nothing comes any more: `result_` says why
};
