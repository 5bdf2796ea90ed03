/// The temporary files of a sorted SEG Y copy (layout: docs/segy-copy.md): the traces that are kept, one after another
/// behind the reel headers, and an index record for each.
#pragma once

#include <sys/types.h>

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "libkyr/disksync.h"
#include "libkyr/files.h"
#include "libkyr/sidework.h"
#include "quarlo/segycopy/segysort.h"
#include "quarlo/tapelib/frame/inputfiles.h"
#include "quarlo/tapelib/frame/piecewriter.h"
#include "quarlo/tapelib/frame/tempfile.h"

/// An index record: key values of a trace and where it lies in the temporary trace file. It stands in the index file as
/// it does in memory.
#pragma pack(push, 4)
struct SortItem {
  double primary;
  double secondary;
  double tertiary;
  double offset;  ///< bytes
  int size;       ///< bytes
};
#pragma pack(pop)
static_assert(sizeof(SortItem) == kThreeKeyBytes);

class SortStore {
 public:
  enum class Created {
    Ready,
    Declined,  ///< a file that stands there is not to be written over
    Failed
  };

  SortStore() = default;
  /// Deletes what create() made: the index, and the trace file unless it is to be kept.
  ~SortStore();
  SortStore(const SortStore&) = delete;
  SortStore& operator=(const SortStore&) = delete;

  /// Makes both files, at paths that hold wherever the job goes, and locks them. Files that stand there and are not
  /// left over from a sort are asked about. What did not come about has been said, here and below.
  /// @param taken files that must not be overwritten; receives both
  Created create(FileSet* taken);
  bool addEbcdic(const std::vector<char>& header);
  bool addBinary(const std::vector<char>& header);
  /// @param trace its bytes stay where they are until takeOver()
  bool addTrace(std::span<const char> trace);
  /// Takes over what is left of traces; a failure shows at the next one.
  void takeOver() { disk_.settle(); }

  /// Ends writing and opens both files for reading.
  bool reopen();
  /// Waits until a trace file that is to be kept is on the disk.
  bool save();
  bool readEbcdic(std::vector<char>* header) { return readHeader("EBCDIC", header); }
  bool readBinary(std::vector<char>* header) { return readHeader("binary", header); }
  /// Reads the index and brings it into the order of the keys.
  bool sortIndex();
  int count() const { return kept_; }
  /// The trace at place `place` (from 0) of the output, whose bytes stay until beforeRefill; places are asked for in
  /// order. Empty when it could not be read.
  std::span<const char> trace(int place);
  /// Called before traces that were handed out are overwritten; empty for nobody.
  std::function<void()> beforeRefill;

 private:
  /// Traces in output order.
  struct Batch {
    std::vector<char> bytes;
    int first = 0;  ///< the place of the first
    int end = 0;    ///< the place behind the last; first: there are none
  };

  static bool claim(TempFile* file, const std::string& path, const char* failure);
  bool areOfOneSort() const;
  bool isLeftover() const;
  bool mayEmpty() const;
  bool empty();
  bool flush();
  bool sayLost(int refused) const;
  bool addHeader(const std::vector<char>& header, const char* traceFileError, const char* indexError);
  bool readHeader(const char* name, std::vector<char>* header);
  const SortItem& itemAt(int place) const;
  bool isSound(const SortItem& item) const;
  bool load(int place);
  void fillNext();
  void fill(Batch* batch, int place) const;

  std::string tracePath_;
  std::string indexPath_;
  TempFile traceTemp_;
  TempFile indexTemp_;
  FileHandle traceFile_;                           // while it is written
  PieceWriter disk_{[](const char* /*line*/) {}};  // whose failures are told here
  double written_ = 0;                             // bytes of the trace file
  FileHandle indexFile_;
  FileHandle traces_;  // while it is read
  DiskSync sync_;      // of a trace file that is kept
  off_t traceFileSize_ = 0;
  off_t headersRead_ = 0;
  std::size_t unflushed_ = 0;  // bytes of traces that an end of the program would lose
  int kept_ = 0;
  std::vector<SortItem> items_;
  Batch batch_;
  std::size_t batchPlace_ = 0;  // of what is not handed out yet
  Batch next_;                  // is read beside
  SideWork side_;               // the last: it uses the others
};
