/// Where a SEG D copy writes: all output tapes, or the files of a directory, one for each field file.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/files.h"
#include "quarlo/segdcopy/segdcopy_log.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/tapechange.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Largest block that traces are packed into.
constexpr std::size_t kTraceBlockBytes = 131072;

/// What a job must not write to.
struct SegdTakenFiles {
  FileSet inputs;
  FileSet others;  ///< the log, the lists, the prepend file
};

/// What the functions that answer false could not do has been said, on the console and in the log.
class SegdOutput {
 public:
  enum class Tapes { Ready, Declined, Failed };

  /// @param taken outlives this object
  SegdOutput(UnitStruct* allUnits, const SegdTakenFiles& taken);

  bool isTape() const { return units_[1].type == UT_TAPE; }
  bool blocksTraces() const { return BlockTraces; }

  /// Writes a disk file as the first file of the tapes: blocks of 1024 bytes, the last up to 2047; a shorter file is
  /// filled up with blanks.
  bool prependFile(const std::string& path);
  /// Begins a field file. @param number stands in the name of a disk file
  bool beginFile(int number);
  /// Writes its headers: on tape one block.
  bool putHeader(std::vector<char> header);
  /// Writes a trace, or packs it into a block with others of its channel set.
  /// @param lent its bytes stay where they are until takeOver()
  bool putSegdTrace(std::span<const char> trace, int channelSet, bool lent);
  /// Takes over what is left of traces that were lent; a failure shows at the next one.
  void takeOver() {
    if (!isTape()) disk_.settle();
  }
  /// Writes what is still to be written of the field file, and its mark.
  bool endFile();
  /// The full tapes' end and the next tapes.
  Tapes handleFullOutput();
  /// Ends a field file that was left unfinished and writes the mark that closes the last tapes. Files are on the disk
  /// then.
  bool finish(JobEnd end);

  /// Where the field file in hand is written.
  const std::string& place() const { return outputName_; }
  /// What was accepted and could not be kept.
  const LostOutput& lost() const { return isTape() ? gone_ : disk_.lost(); }

  int OutputTapeNumber = 1;
  int FilesPerTape = 0;
  double BytesOut = 0;  ///< on the present output tapes

 private:
  bool openFile(const std::string& path);
  bool writeTape(std::span<const char> piece);
  bool loseTrace(std::size_t bytes);
  bool flushBlock();
  bool writeBlock(std::span<const char> piece);
  bool writeMark();
  bool writeError();
  std::size_t blockLimit() const;

  UnitStruct* units_;
  const SegdTakenFiles& notToWrite_;
  FileSet written_;
  std::string outputName_;
  FileHandle stream_;
  PieceWriter disk_{logMessage};
  DiskSync sync_;
  bool BlockTraces;
  std::vector<char> TraceBlock;
  int tracesInBlock_ = 0;
  int LastChannelSet = 0;  // of the traces in the block
  LostOutput gone_;        // at a tape
  bool fileIsOpen_ = false;
  bool errorSaid_ = false;
};
