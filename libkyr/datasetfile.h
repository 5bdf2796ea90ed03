/// One open dataset: its counts and properties, its traces, the mark that tells whether it was closed properly.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "libkyr/datasetheader.h"
#include "libkyr/slotstore.h"
#include "libkyr/source.h"

/// Calls answer a KyrResult unless they say otherwise; they throw only for want of memory.
class DatasetFile final : public TraceSource {
 public:
  /// Where lines for the user go.
  using Say = std::function<void(const std::string& line)>;

  DatasetFile(std::string path, Say say) : path_(std::move(path)), say_(std::move(say)) {}
  ~DatasetFile() override;

  const std::string& path() const { return path_; }
  /// Whether `path` leads to one of the files of this dataset, or to one that its next begin() writes over or removes.
  bool uses(const char* path) const override;

  // -- opening and closing

  int openRead();
  /// For changing headers and properties in place; only of a dataset that is whole. Nobody else can write it meanwhile.
  int openUpdate();
  /// Makes sure that the file can be written, and that nobody else writes it (kyrInUse) as long as this one is open. An
  /// existing one stays as it is until begin().
  int announce(int type, int recordsPerFile, int tracesPerRecord);
  /// Creates the files of an announced dataset by the counts that it has now. Later calls do nothing.
  int begin();
  /// Closes the files; those of an output get their closed mark when all of it could be written. @return kyrDiskError
  /// when not all that was written is on the disk
  int close() override;
  /// From now on close() gives an output no closed mark: its job could not finish it.
  void leaveUnfinished() { finished_ = false; }
  /// Closes an output without the mark and removes the files that it made; one that was there before stays.
  void discard();

  /// False for a dataset that was found without its closed mark, or shorter than its counts say.
  bool isWhole() const { return whole_; }

  // -- properties

  const DatasetHeader& header() const { return header_; }
  const GeneralSeisDataOrg& org() const override { return header_.org; }
  int type() const override { return header_.type; }
  SourceFormat format() const override;
  const DatasetShape& shape() const { return shape_; }
  int getProperty(int property, int type, int units, void* value) const;
  int setProperty(int property, int type, int units, const void* value);
  /// Takes over the properties of another source but for counts and ranges.
  int copyProperties(const GeneralSeisDataOrg& from);

  // -- traces

  /// Of a trace's slot, in the file of its part.
  std::int64_t position(int record, int trace) override;
  int write(int record, int trace, const float* samples, const TraceInfo& info);
  /// Hands what was written to the files. @return how many of the traces written so far the disk did not take
  std::uint64_t settle();

 private:
  enum class Stage { Closed, Reading, Updating, Announced, Writing };

  int openExisting(Stage stage);
  int openParts();
  bool openPart(int part);
  void settleCounts(std::uint64_t available, int partsMissing);
  std::uint64_t slotsWithData() const;
  void settleEmpty();
  std::string strangerAmong(int parts) const;
  bool isOldPart(int part) const;
  bool create(int part);
  int inUse() const;
  bool createParts();
  bool writeHeaders(int parts);
  bool finishParts(bool cut);
  bool removeParts(int first, int count);
  bool removeOldParts();
  void removeMade();
  int setCount(int property, int type, int units, const void* value);
  bool cutsWritten(int property, int count) const;
  int fetch(int record, int trace, float* samples, TraceInfo* info) override;
  int readSlot(int record, int trace, float* samples, TraceInfo* info);
  void setShape(const DatasetShape& shape);
  int fail(const char* what);
  int lost(int record, int trace, int result);
  bool has(int record, int trace) const;
  std::uint64_t seedOf(int record, int trace) const;
  SlotStore::Place placeOf(int record, int trace) const;

  std::string path_;
  Say say_;
  SlotStore store_;
  DatasetHeader header_;
  DatasetShape shape_;  ///< the header's counts
  Stage stage_ = Stage::Closed;
  bool whole_ = true;
  std::optional<DatasetHeader> old_;  ///< of the dataset that an output overwrites
  std::vector<std::string> made_;     ///< files of an output that were not there before
  bool finished_ = true;              ///< an output's job has written all of it
  bool failed_ = false;               ///< a write failed: no more of them, no closed mark
  int writtenRecords_ = 0;            ///< the largest numbers that were written
  int writtenTraces_ = 0;
  LostReads lostReads_;
};
