/// A SEG Y file on disk as a source of traces (libkyr/source.h): any trace in any order.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "libkyr/bytesat.h"
#include "libkyr/source.h"
#include "quarlo/tapelib/formats/segytraces.h"

/// What a user chooses of how a SEG Y input is read; by default, what its headers say.
struct SegySourceParams {
  SegyChoices choices{};
  bool gridLines = false;  ///< CMP line and location from the inline and crossline numbers
  /// Whether records whose first trace is of this field file are passed over; empty: none are.
  std::function<bool(int fieldFile)> skips{};
  // Of tapes.
  int mostTraces = 0;    ///< places of a record; 0: as the binary header says
  bool oneFile = false;  ///< the filemark behind the first file ends the input; else two filemarks do
  bool survey = false;   ///< tell at the end what records the likely fields would make
};

class SegyFileSource final : public TraceSource {
 public:
  using Say = std::function<void(const std::string& line)>;

  /// Looks through the file's headers, and through those of its traces: which records there are.
  /// @param say takes lines about what is odd, now and when the source is closed
  /// @param reason receives why the file cannot be read
  /// @return null with a reason
  static std::unique_ptr<SegyFileSource> open(const std::string& path, SegyFormat format,
                                              const SegySourceParams& params, Say say, std::string* reason);

  const SegyLayout& layout() const { return layout_; }
  /// What records the likely fields would make: a line each, after another pass over the trace headers.
  std::vector<std::string> surveyRecords();

  const GeneralSeisDataOrg& org() const override { return org_; }
  SourceFormat format() const override;
  std::int64_t position(int record, int trace) override;
  bool uses(const char* path) const override;
  /// Says what was odd in the traces that were read.
  int close() override;

 private:
  SegyFileSource(std::string path, SegyFormat format, Say say)
      : path_(std::move(path)), format_(std::move(format)), say_(std::move(say)) {}

  bool begin(const SegySourceParams& params, std::string* reason);
  void takeRecords(const SegySourceParams& params);
  bool takeCounts(std::string* reason);
  /// From 0; nothing for a place that no trace of the record has.
  std::optional<std::uint64_t> traceAt(int record, int trace) const;
  int fetch(int record, int trace, float* samples, TraceInfo* header) override;

  std::string path_;
  SegyFormat format_;
  Say say_;
  LostReads lostReads_;
  FileBytes file_;
  SegyLayout layout_;
  struct Record {
    std::uint64_t firstTrace;  // from 0
    std::uint64_t traces;
  };
  std::vector<Record> records_;
  std::unique_ptr<SegyTraceReader> reader_;
  GeneralSeisDataOrg org_ = newSeisOrg();
};
