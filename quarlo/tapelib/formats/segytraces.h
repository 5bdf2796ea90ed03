/// SEG Y traces as traces of a dataset: properties out of headers, samples as floats.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "libkyr/properties.h"
#include "libkyr/segysamples.h"
#include "quarlo/tapelib/formats/segydecode.h"
#include "quarlo/tapelib/formats/segylayout.h"

/// Free trace property that holds the delay of the first sample, in seconds.
constexpr int kTraceDelay = 150;

/// Makes the CMP line and location of traces come from the fields "Inline" and "Crossline", and from no other.
void takeGridLines(SegyFormat* format);

/// What traces had that their headers' reader should know, counted over a run.
struct SegyOddities {
  SampleOddities samples;
  std::uint64_t delayed = 0;  ///< traces whose first sample is not at time 0
  double firstDelay = 0.0;    ///< seconds
  std::uint64_t oddScalars = 0;
  std::string oddScalarField;  ///< the first field whose scalar was passed over

  /// Lines for a log; none when nothing is odd.
  std::vector<std::string> lines() const;
};

/// Reads the traces of one input.
class SegyTraceReader {
 public:
  /// @param format,layout outlive this
  SegyTraceReader(const SegyFormat& format, const SegyLayout& layout);

  /// The properties that fields are read into; null is what no field gives. Trace identification 2 makes a trace dead.
  void readHeader(std::span<const char> header, TraceInfo* properties);
  /// The samples behind a header, as many as `samples` holds: zeros behind those of a shorter trace.
  /// @param data whole samples
  void readSamples(std::span<const char> header, std::span<const char> data, std::span<float> samples);

  const SegyOddities& oddities() const { return odd_; }

 private:
  struct Mapped {
    SegyValue value;
    int property;
    const SegyField* field;
  };

  void markDead(std::span<const char> header, TraceInfo* properties) const;

  const SegyLayout& layout_;
  std::vector<Mapped> mapped_;
  SegyValue type_;
  SegyValue weight_;
  TraceInfo nothing_{};  // with every named property null
  SegyOddities odd_;
};
