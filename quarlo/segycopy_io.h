/// The files of the SEG Y and SEG D copies: reading in large pieces, writing whole traces, and telling files apart.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/text.h"
#include "quarlo/tapechange.h"
#include "quarlo/tapelib/cons_win.h"
#include "quarlo/tapelib/tlv_fcn.h"

/// Files that exist, known by what they are and not by their names.
class FileSet {
 public:
  void add(const std::string& path);
  bool holds(const std::string& path) const;

 private:
  std::set<std::pair<dev_t, ino_t>> nodes;
};

/// The working directory of before comes back with the end of this.
class DirectoryVisit {
 public:
  explicit DirectoryVisit(const DIRECTORY& directory) : saved(xvt_fsys_save_dir()) {
    there = saved && directory.path[0] != '\0' && xvt_fsys_set_dir(&directory);
  }
  ~DirectoryVisit() {
    if (saved) {
      xvt_fsys_restore_dir();
    }
  }
  DirectoryVisit(const DirectoryVisit&) = delete;
  DirectoryVisit& operator=(const DirectoryVisit&) = delete;
  /// Whether the directory is the working directory now; one without a name never becomes it.
  bool isThere() const { return there; }

 private:
  bool saved;
  bool there = false;
};

/// What stands in a directory under names that match a pattern, in listing order. Links count as what they lead to.
struct DirectoryFiles {
  std::vector<std::string> names;   ///< regular files; also what is not to be seen, for opening it says why
  std::vector<std::string> others;  ///< directories, pipes, devices

  /// A line for each of the others.
  void nameOthers(void (*tell)(const char* line)) const;
};
/// @param pattern of the shell
DirectoryFiles listFiles(const DIRECTORY& directory, const char* pattern);

/// Reads a file in large pieces and hands its bytes out where they lie.
class PieceReader {
 public:
  /// Starts at the beginning of a stream that nobody else reads meanwhile.
  void begin(std::FILE* stream);
  /// The next `bytes` bytes, valid until the next call; fewer at the end of the file, none (and failed()) on an error.
  std::span<const char> take(std::size_t bytes);
  /// The same bytes, which the next call hands out again.
  std::span<const char> peek(std::size_t bytes);
  bool failed() const { return error; }
  /// Called before bytes that were handed out are overwritten; empty for nobody.
  std::function<void()> beforeRefill;

 private:
  bool fill(std::size_t bytes);

  int descriptor = -1;
  std::vector<char> buffer;
  std::size_t first = 0;  // of what is not handed out yet
  std::size_t last = 0;
  bool error = false;
};

/// What a failed write took back of what it had accepted.
struct LostOutput {
  int traces = 0;
  double bytes = 0;        ///< of the traces
  double headerBytes = 0;  ///< of what was no trace
};

/// Writes pieces to a file through a large buffer. A file that runs full ends with its last whole piece.
class PieceWriter {
 public:
  /// @param tell takes the lines about what went wrong
  explicit PieceWriter(void (*tell)(const char* line) = console_out) : say(tell) {}

  /// Writes to this stream from now on, which nobody else writes to meanwhile. What the file holds goes with the first
  /// write, not before. @param fileName for the messages
  void begin(std::FILE* stream, const char* fileName);
  /// @return false when the disk took it not: lost() says what went with it
  bool write(std::span<const char> piece, bool isTrace);
  /// The same for a piece whose bytes stay where they are until the next flush: it is not copied into the buffer.
  bool writeLent(std::span<const char> piece, bool isTrace);
  /// Hands what is still in the buffer, or lent, to the disk.
  bool flush();
  const LostOutput& lost() const { return gone; }

 private:
  struct Piece {
    std::size_t end;  // in the buffer, or in what is lent
    bool isTrace;
  };

  bool writeBuffer(std::size_t* written);
  bool lose(std::size_t written, int reason);

  void (*say)(const char* line);
  std::FILE* file = nullptr;
  std::string name;
  void forget();

  std::vector<char> buffer;
  std::span<const char> lent;  // pieces one behind the other; nothing is in the buffer then
  std::vector<Piece> pieces;   // of either
  LostOutput gone;
  bool broken = false;
  bool emptied = false;  // what stood in the file is gone
};

/// Where a SEG Y copy writes: all output tapes, a block for each piece, or a disk file through a large buffer. A disk
/// file that runs full ends with its last whole piece.
class SegyOutput {
 public:
  /// What came of asking for the next volume.
  enum class Volume { Ready, Declined, Failed };

  /// @param allInputs files that are never written to; outlives this object
  SegyOutput(UnitStruct* allUnits, const FileSet& allInputs);

  bool isTape() const { return units[1].type == UT_TAPE; }
  /// @return false when the disk or tape took it not: lost() says what went with it
  bool writeHeader(const std::vector<char>& header) { return write({header.data(), header.size()}, false); }
  bool writeTrace(std::span<const char> trace) { return write(trace, true); }
  const LostOutput& lost() const { return isTape() ? gone : disk.lost(); }

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
  bool write(std::span<const char> piece, bool isTrace);
  bool flush() { return isTape() || disk.flush(); }
  void startSync();
  std::string volumeName(int index) const { return baseName + formatText("%.3d.sgy", index); }
  Volume nextFile(int index);
  Volume nextTapes();

  UnitStruct* units;
  const FileSet& inputs;
  std::string baseName;  // of the first volume, up to its first "."
  PieceWriter disk;
  DiskSync sync;
  LostOutput gone;  // at a tape
};

/// Writes all of it. @return bytes written, fewer with errno after a failure
std::size_t writeAll(int descriptor, const char* data, std::size_t bytes);
