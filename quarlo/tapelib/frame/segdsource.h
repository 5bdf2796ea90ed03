/// SEG D field files on disk as a source of traces: each field file is a record, its traces in their order.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "libkyr/source.h"
#include "quarlo/tapelib/formats/fieldfile.h"
#include "quarlo/tapelib/frame/segdtraces.h"

/// Field files of one or more files on disk. The first trace that is taken decides on the samples and the interval.
class SegdSource : public TraceSource {
 public:
  /// @param how its head is not looked at
  SegdSource(ProcessRecord* procRecord, const KyrSegdInput& how);

  /// Walks over all field files of a file, or of its whole folder, and tells on the console what they hold and what is
  /// odd or damaged. @return 0, or 1 after a line when there is no trace to read
  int open(const std::string& path);

  const SegdRecord& headersOf(int record) const {
    return records_.at(static_cast<std::size_t>(record) - 1).file.record;
  }

  const GeneralSeisDataOrg& org() const override { return org_; }
  SourceFormat format() const override;
  std::int64_t position(int record, int trace) override;
  bool uses(const char* path) const override;
  /// kyrTraceLost when something was announced that is not there: whoever read the rest has not read everything.
  int close() override;

 private:
  struct Record {
    std::size_t number = 0;  // of the file
    SegdFieldFile file;
  };

  int fetch(int record, int trace, float* samples, TraceInfo* header) override;
  int lost(const Record& record, std::uint64_t byte, const std::string& why);

  bool walk(const std::string& path);
  bool isOther();
  void take(std::size_t file, SegdFieldFile& found);
  void leaveOutOthers();
  void describe();
  void tellWhatItIs();
  bool turnTo(std::size_t file);
  void say(const std::string& line) const { ProcessConsole(procRecord_, line.c_str()); }

  ProcessRecord* procRecord_;
  KyrSegdInput how_;
  SegdTraceChoice choice_;
  SegdTraceReader reader_;
  MoreParams fileChoice_{};
  std::vector<std::string> files_;
  std::vector<Record> records_;
  FileBytes bytes_;                  // of one of the files
  std::optional<std::size_t> open_;  // which
  GeneralSeisDataOrg org_ = newSeisOrg();
  bool isDamaged_ = false;
  LostReads lostReads_;
};
