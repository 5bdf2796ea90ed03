/// Sources of traces: what the link of an input stands for. A dataset file is one (datasetfile.h); a format module
/// serves others by deriving from TraceSource and handing them to the process record. Guide: docs/format-modules.md.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "libkyr/link.h"
#include "libkyr/process.h"
#include "libkyr/properties.h"
#include "libkyr/seisorg.h"

/// How the traces of a source stand where they come from.
struct SourceFormat {
  std::string description{};  ///< of SEG Y the file name of its format's description; empty without one
  int sampleFormat = 0;       ///< code of the sample format, as the format itself counts them
  int bytesPerSample = 0;
  double interval = 0;     ///< seconds; dataset property 11 is the nearest float to it
  bool ascending = false;  ///< can be read forward only, as a tape
};

/// Records x traces, numbered from 1. Counts, properties and format stay as they are while the source lives: callers
/// take memory by them. The destructor closes what close() did not.
class TraceSource {
 public:
  TraceSource() = default;
  virtual ~TraceSource() = default;
  TraceSource(const TraceSource&) = delete;
  TraceSource& operator=(const TraceSource&) = delete;

  /// Counts and properties of the whole. The records are -1 where nobody knows them before the end: then the first
  /// trace of a record behind the last is answered with kyrNoSuchTrace, and all records before it are there.
  virtual const GeneralSeisDataOrg& org() const = 0;
  /// The SeisType.
  virtual int type() const { return kAnySeismicType; }
  virtual SourceFormat format() const { return {}; }
  /// The first place of a record, at `trace` or behind it, that may have a trace; 0 when there is none any more. Who
  /// cannot tell answers `trace`, as at the source's end: reading it says how things stand.
  virtual int placeFrom(int /*record*/, int trace) { return trace; }
  /// Byte, in its file, at which a trace begins; -1 where there is none.
  virtual std::int64_t position(int /*record*/, int /*trace*/) { return -1; }
  /// Whether `path` leads to a file that is read: nobody may write it meanwhile.
  virtual bool uses(const char* /*path*/) const { return false; }
  /// @return kyrOk, or what went wrong too late to be answered elsewhere
  virtual int close() { return kyrOk; }

  /// Reads a trace's header, and its samples where there is room for them. Whatever is answered but kyrOk, and when
  /// fetch throws, header and samples are those of a dead trace (killUnreadable).
  int read(int record, int trace, float* samples, TraceInfo* header);

 private:
  /// Does it, for a record and a trace within the counts; `samples` may be null. Places of traces that nobody wrote are
  /// made dead (makeDead) and are no failure.
  ///
  /// Failures are told on the console by who meets them. Other traces can still be read after kyrTraceLost and
  /// kyrDiskError; kyrTooLate is answered for what an ascending source has passed, the trace asked for last being at
  /// hand as often as it is asked for; after kyrSourceEnded nothing more can be read. A code that is no KyrResult
  /// becomes kyrTraceLost.
  virtual int fetch(int record, int trace, float* samples, TraceInfo* header) = 0;
};

/// The reads that a source could not do: the first are told one by one, the others by their number.
class LostReads {
 public:
  /// Counts one. @return whether it is told
  bool add() { return ++count_ <= kNamed; }
  /// The line for the source's end, empty where all were told; counts anew from here on. @param path what was read
  std::string rest(const std::string& path);

 private:
  static constexpr int kNamed = 10;
  long long count_ = 0;
};

/// Gives out a dead trace. @param samples may be null @param flag KillFlag bits
void makeDead(int count, float* samples, TraceInfo* header, int flag);

// ---- sources of a process record ----------------------------------------------------------------------------------

/// Gives a source to a record: the next NewInputFile of that input answers a link to it, whatever its path. CloseFile
/// and FreeProcessRecord close and destroy it. One that waits for the same input already is destroyed.
/// @return 0; kyrBadCall, the source being destroyed, for a negative input or counts that no caller can take memory by
int RegisterSource(ProcessRecord* procRecord, int inputNumber, std::unique_ptr<TraceSource> source);

/// Keeps `owner` (a loaded module) until the sources that the record was given since the last call are destroyed.
void HoldSources(ProcessRecord* procRecord, const std::shared_ptr<void>& owner);
/// Destroys the sources of an owner that wait for their NewInputFile.
void DropSources(ProcessRecord* procRecord, const std::shared_ptr<void>& owner);
