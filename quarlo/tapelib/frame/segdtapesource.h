/// SEG D on tapes as a source of traces (libkyr/source.h): a field file in each tape file, read forward, tape after
/// tape. Its headers come in the first blocks; a block behind them holds one trace, or several.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "libkyr/streamsource.h"
#include "quarlo/tapelib/formats/fieldfile.h"
#include "quarlo/tapelib/formats/segdblocks.h"
#include "quarlo/tapelib/frame/segdtraces.h"
#include "quarlo/tapelib/frame/tapeblocks.h"

class SegdTapeSource final : public StreamSource {
 public:
  /// @param how its head is not looked at
  SegdTapeSource(ProcessRecord* procRecord, const KyrSegdInput& how);

  /// Reads as far as the first trace that is taken: it decides on the samples and the interval, its field file on the
  /// traces of a record unless they are given. Tells on the console what there is.
  /// @return 0, or 1 after a line when there is no trace to read
  int open();

  /// Tape files that were read to their end.
  int files() const { return tape_.files(); }

  const GeneralSeisDataOrg& org() const override { return org_; }
  SourceFormat format() const override { return format_; }
  /// kyrTraceLost when something was announced that is not there: whoever read the rest has not read everything.
  int close() override;

 private:
  /// A trace that waits for its turn.
  struct Waiting {
    SegdTracePlace place{};
    std::size_t index = 0;  // among those of a multiplexed field file
    int file = 0;           // which of the field files
    std::string lost{};     // the line that says why; empty for one that can be read
  };
  /// What a step of the search came to.
  enum class Step { GoOn, Found, End, Failed };

  Step findTrace();
  Step searchOn();
  Step beginFile();
  Step takeHeaders();
  Step gatherScans();
  void takeBlock(std::span<const char> block);
  void takeLostBlock();
  std::string lossText(const std::string& why) const;
  void wait(const std::string& why) { traces_.push_back({{0, 0, kNoSegdSet}, 0, files_, lossText(why)}); }
  void endFile();
  void leaveFile();
  Step passFile(const std::string& why);
  bool isTaken(const Waiting& trace);
  Step findFirst();
  bool describe();
  int next(StreamTrace* next) override;
  int readTrace(StreamTrace* next);
  void damaged(const std::string& what);
  void say(const std::string& line) const { ProcessConsole(procRecord_, line.c_str()); }

  ProcessRecord* procRecord_;
  KyrSegdInput how_;
  TapeBlocks tape_;
  SegdTraceChoice choice_;
  SegdTraceReader reader_;
  MoreParams fileChoice_{};
  GeneralSeisDataOrg org_ = newSeisOrg();
  SourceFormat format_{};

  // The field file in hand.
  bool isInFile_ = false;
  SegdFieldFile file_;
  HeldBytes bytes_;             // the block that the traces stand in, or all of a multiplexed field file
  std::deque<Waiting> traces_;  // of it
  std::uint64_t met_ = 0;       // traces
  std::size_t inBlock_ = 1;     // of the block before
  int files_ = 0;               // its number

  int recordsFile_ = 0;  // field file of the record in hand
  int record_ = 0;
  int trace_ = 0;
  bool hasFound_ = false;  // the first trace waits already
  bool isDamaged_ = false;
};
