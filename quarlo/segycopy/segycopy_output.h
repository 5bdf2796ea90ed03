/// The output of a SEG Y copy: tapes, or a disk file and its further volumes.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/text.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/tapechange.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Where a SEG Y copy writes: all output tapes, a block for each piece, or a disk file through a large buffer. A disk
/// file that runs full ends with its last whole piece.
class SegyOutput {
 public:
  /// What came of asking for the next volume.
  enum class Volume { Ready, Declined, Failed };

  /// @param allInputs files that are never written to; outlives this object
  SegyOutput(UnitStruct* allUnits, const FileSet& allInputs);

  bool isTape() const { return units_[1].type == UT_TAPE; }
  /// @return false when the disk or tape took it not: lost() says what went with it
  bool writeHeader(const std::vector<char>& header);
  /// @param trace its bytes stay where they are until takeOver(); a failure may show at the next one
  bool writeTrace(std::span<const char> trace);
  /// Takes over what is left of traces; a failure shows at the next one.
  void takeOver() {
    if (!isTape()) disk_.settle();
  }
  const LostOutput& lost() const { return isTape() ? gone_ : disk_.lost(); }

  /// Names of further volumes, up to number `last`, that stand on disk already and are no inputs, in order.
  std::vector<std::string> existingVolumes(int last) const;
  /// Ends the present volume and begins the next. On disk that is a file beside the first, its name up to the first "."
  /// followed by `index` in three digits; on tape the next cartridge of every output drive.
  Volume getAnotherOutput(int index);
  /// Writes both reel headers at the start of a volume. @return false after a console line
  bool initOutput(const std::vector<char>& ebcdic, const std::vector<char>& binary);
  /// One mark between two files on tape. @return false after a console line
  bool separateFiles();
  /// The end of the last volume: what is buffered, the double mark. Files are on the disk then. @return false when that
  /// could not be done
  bool finish(JobEnd end);

 private:
  bool writeTape(std::span<const char> piece) const;
  bool flush() { return isTape() || disk_.flush(); }
  void startSync();
  std::string volumeName(int index) const { return baseName_ + formatText("%.3d.sgy", index); }
  Volume nextFile(int index);
  Volume nextTapes();

  UnitStruct* units_;
  const FileSet& inputs_;
  std::string baseName_;  // of the first volume, up to its first "."
  PieceWriter disk_;
  DiskSync sync_;
  LostOutput gone_;  // at a tape
};
